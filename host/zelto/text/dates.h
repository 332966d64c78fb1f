// Points in time as scripts have them: a DATE, days since 1899-12-30 in local time.
#pragma once

#include <ctime>
#include <string>

namespace zelto {

// As headers write it, "Sun, 06 Nov 1994 08:49:37 GMT"; years outside 1601 to 9999 become the nearest
// one inside.
std::string http_date_of(double date);

// The DATE of a point in time, in local time.
double date_of(std::time_t seconds);

// The DATE so many minutes from now; the clock that is put forward or back until then does not change it.
double date_in(double minutes);
// The minutes from now to a DATE, to the second.
double minutes_until(double date);

}  // namespace zelto
