// The numbers by which scripts know the errors of these classes: e.number & 0xFFFF.
#pragma once

#include <korlib/hresult.h>

namespace korlib {

// Dictionary and files.
inline constexpr HRESULT kKeyExists = hresult(0x800A01C9);         // 457
inline constexpr HRESULT kElementNotFound = hresult(0x800A802B);   // 32811
inline constexpr HRESULT kFileNotFound = hresult(0x800A0035);      // 53
inline constexpr HRESULT kBadFileMode = hresult(0x800A0036);       // 54
inline constexpr HRESULT kFileExists = hresult(0x800A003A);        // 58
inline constexpr HRESULT kPastEndOfFile = hresult(0x800A003E);     // 62
inline constexpr HRESULT kPermissionDenied = hresult(0x800A0046);  // 70

// Stream and database.
inline constexpr HRESULT kInvalidArgument = hresult(0x800A0BB9);    // 3001
inline constexpr HRESULT kCannotOpenFile = hresult(0x800A0BBA);     // 3002
inline constexpr HRESULT kCannotWriteFile = hresult(0x800A0BBC);    // 3004
inline constexpr HRESULT kNoCurrentRecord = hresult(0x800A0BCD);    // 3021
inline constexpr HRESULT kNotAllowedHere = hresult(0x800A0C93);     // 3219
inline constexpr HRESULT kNotInThisContext = hresult(0x800A0CAE);   // 3246
inline constexpr HRESULT kNotSupported = hresult(0x800A0CB3);       // 3251
inline constexpr HRESULT kItemNotFound = hresult(0x800A0CC1);       // 3265
inline constexpr HRESULT kInvalidConversion = hresult(0x800A0D5D);  // 3421
inline constexpr HRESULT kObjectClosed = hresult(0x800A0E78);       // 3704
inline constexpr HRESULT kObjectOpen = hresult(0x800A0E79);         // 3705
inline constexpr HRESULT kInvalidConnection = hresult(0x800A0E7D);  // 3709
inline constexpr HRESULT kQueryTimedOut = hresult(0x80040E31);

}  // namespace korlib
