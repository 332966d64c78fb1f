// A host that exports Windows functions of its own, and what a test tells them to do. They are strong
// definitions in this program; the component must use them instead of its fallbacks.
#pragma once

#include <string>
#include <vector>

#include <korlib/types.h>

struct ITypeLib;

namespace test {

// The registry writes down each call, and fails the one whose number a test names (from 1; 0 for none).
struct RecordedRegistry {
  std::vector<std::wstring> calls;
  int failing_call = 0;
  int open_keys = 0;
};
extern RecordedRegistry registry;

// So do digests and base64. Every MD5 is 00 01 … 0f and every SHA-1 ff fe … ec, every text of base64
// "own", and what any of them stands for the two bytes 'o' and 'k'.
struct RecordedCrypt {
  std::vector<std::wstring> calls;
  int failing_call = 0;
  int open_handles = 0;
  DWORD missing_bytes = 0;  // of a digest
};
extern RecordedCrypt crypt;

// What LoadTypeLib gives for the module's path and for the path of the host's library; null fails.
extern ITypeLib* own_library;
extern ITypeLib* host_library;
extern std::vector<std::wstring> loaded_paths;

extern std::wstring module_path;          // what GetModuleFileNameW answers
extern unsigned long tick_count;          // what GetTickCount answers
extern bool mapping_fails;                // LCMapStringW answers 0
extern void* asked_module;                // what GetModuleFileNameW was last asked for, and with which
extern DWORD asked_size;                  // room, in characters
extern int calls_disabled;                // calls of DisableThreadLibraryCalls
extern void* disabled_module;             // and of which module the last one was
extern std::vector<unsigned int> sleeps;  // what Sleep was asked for, without sleeping
extern HRESULT guid_failure;              // what CoCreateGuid answers when it is a failure
extern std::wstring guid_text;            // what StringFromGUID2 writes, 0 characters being its failure
extern int mapping_failure;               // what LCMapStringW answers instead of 0 when it fails

}  // namespace test
