// The data types of scripts, and the kinds of values that travel to and from a database.
#pragma once

#include <optional>

#include <korlib/comvariant.h>

#include "database/constants.h"

namespace korlib {

// What a column of that kind reports.
DataType type_of(odbc::Kind kind);
// None for a number that is not a type, and for empty and variant, which leave the kind to the value.
std::optional<odbc::Kind> kind_of(DataType type);
// For a parameter that declares no type.
odbc::Kind kind_of_value(const VARIANT& value);

}  // namespace korlib
