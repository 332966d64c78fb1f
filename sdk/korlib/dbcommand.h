// IKorDBCommand: the host's database command class, "ADODB.Command", and its relatives' identifiers.
#pragma once

#include <korlib/dispatch.h>

// A statement for a database. The three setters that the component calls; every other member (Execute,
// Parameters …) is reached late-bound.
struct IKorDBCommand : IDispatch {
  // A connection object, or a connection string as text, which the command opens for itself. An empty value
  // takes the connection away. A database that cannot be opened is an error with the driver's words.
  virtual HRESULT put_ActiveConnection(VARIANT connection) = 0;
  // How the text is meant: 1 a statement, 2 a table's name, 4 a procedure's name, 8 unknown.
  virtual HRESULT put_CommandType(LONG type) = 0;
  // The text, copied. It is not looked at before the command is executed.
  virtual HRESULT put_CommandText(BSTR text) = 0;

 protected:
  ~IKorDBCommand() = default;
};
KORLIB_IID(IKorDBCommand, "5A684353-552E-4F43-84F0-783D67235AEE");

// The classes of the host's database: a command, a connection, a set of rows. For CoCreateInstance; the last
// two are used late-bound only.
inline constexpr GUID CLSID_KorDBCommand = korlib::guid("6C4D6CA3-7C7F-40D0-849C-9FF08BF9116E");
inline constexpr GUID CLSID_KorDBConnection = korlib::guid("EF9EEE12-F7FA-48C1-895E-7E9A0EA8682F");
inline constexpr GUID CLSID_KorDBRecordset = korlib::guid("D4EC3202-E3CD-42BC-8F05-80932EC09205");
