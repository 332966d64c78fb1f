// IKorDBCommand: the host's database command class, "ADODB.Command", and its relatives' identifiers.
#pragma once

#include <korlib/dispatch.h>

// The three setters that the component calls. Every other member (Execute, Parameters …) is reached
// late-bound. The connection is a connection object or a connection string.
struct IKorDBCommand : IDispatch {
  virtual HRESULT put_ActiveConnection(VARIANT connection) = 0;
  virtual HRESULT put_CommandType(LONG type) = 0;
  virtual HRESULT put_CommandText(BSTR text) = 0;

 protected:
  ~IKorDBCommand() = default;
};
KORLIB_IID(IKorDBCommand, "5A684353-552E-4F43-84F0-783D67235AEE");

inline constexpr GUID CLSID_KorDBCommand = korlib::guid("6C4D6CA3-7C7F-40D0-849C-9FF08BF9116E");
inline constexpr GUID CLSID_KorDBConnection = korlib::guid("EF9EEE12-F7FA-48C1-895E-7E9A0EA8682F");
inline constexpr GUID CLSID_KorDBRecordset = korlib::guid("D4EC3202-E3CD-42BC-8F05-80932EC09205");
