// The place of each operation in its interface's table, which callers compiled elsewhere rely on.
#include <gtest/gtest.h>
#include <mirt/mirt.h>

#include <cstring>

#include <korlib/errorinfo.h>
#include <korlib/typeinfo.h>

#include "frame/class_factory.h"
#include "templator/mirted_templator_impl.h"
#include "templator/text_templator_impl.h"

namespace test {
namespace {

// A pointer to a virtual member function holds one more than the offset in the table.
template <class Member>
std::size_t slot_of(Member member) {
  std::uintptr_t offset = 0;
  static_assert(sizeof member >= sizeof offset);
  std::memcpy(&offset, &member, sizeof offset);
  EXPECT_EQ(1u, offset % sizeof(void*)) << "not virtual";
  return offset / sizeof(void*);
}

// Makes the protected operations of the engine's owners visible.
template <class Impl>
struct Opened : Impl {
  static std::size_t slot_of_on_marked() { return slot_of(&Opened::OnMarked); }
};

struct Row {
  const char* operation;
  std::size_t slot;
  std::size_t expected;
};
#define SLOT(Interface, operation, expected) \
  { #Interface "::" #operation, slot_of(&Interface::operation), expected }

TEST(InterfaceLayout, IsThatOfTheContract) {
  const Row rows[] = {
      SLOT(IUnknown, QueryInterface, 0),
      SLOT(IUnknown, AddRef, 1),
      SLOT(IUnknown, Release, 2),
      SLOT(IDispatch, GetTypeInfoCount, 3),
      SLOT(IDispatch, GetTypeInfo, 4),
      SLOT(IDispatch, GetIDsOfNames, 5),
      SLOT(IDispatch, Invoke, 6),
      SLOT(IClassFactory, CreateInstance, 3),
      SLOT(IClassFactory, LockServer, 4),
      SLOT(ITypeInfo, GetIDsOfNames, 10),
      SLOT(ITypeInfo, Invoke, 11),
      SLOT(ITypeLib, GetTypeInfoOfGuid, 6),
      SLOT(ICreateErrorInfo, SetSource, 4),
      SLOT(ICreateErrorInfo, SetDescription, 5),
      SLOT(IErrorInfo, GetSource, 4),
      SLOT(IErrorInfo, GetDescription, 5),
      SLOT(IObjectPool, Take, 0),
      SLOT(IObjectPool, Free, 1),

      SLOT(ITextTemplator, putref_Script, 7),
      SLOT(ITextTemplator, get_Script, 8),
      SLOT(ITextTemplator, putref_Stream, 9),
      SLOT(ITextTemplator, get_Stream, 10),
      SLOT(ITextTemplator, ProcessTemplateFile, 11),
      SLOT(ITextTemplator, ProcessTemplate, 12),
      SLOT(ITextTemplator, Write, 13),
      SLOT(ITextTemplator, Flush, 14),
      {"OnMarked after them", Opened<GITextTemplatorImpl<ITextTemplator>>::slot_of_on_marked(), 15},

      SLOT(IMirtedTemplator, putref_Script, 7),
      SLOT(IMirtedTemplator, get_Script, 8),
      SLOT(IMirtedTemplator, get_Main, 9),
      SLOT(IMirtedTemplator, putref_Stream, 10),
      SLOT(IMirtedTemplator, get_Stream, 11),
      SLOT(IMirtedTemplator, ProcessTemplateFile, 12),
      SLOT(IMirtedTemplator, ProcessTemplate, 13),
      SLOT(IMirtedTemplator, Write, 14),
      SLOT(IMirtedTemplator, Flush, 15),
      {"OnMarked after them", Opened<GIMirtedTemplatorImpl<IMirtedTemplator>>::slot_of_on_marked(), 16},

      SLOT(CTemplatorConcept, OnMarked, 0),
      SLOT(CTemplatorConcept::ITextStreamWrapper, putref_Substance, 0),
      SLOT(CTemplatorConcept::ITextStreamWrapper, get_Substance, 1),
      SLOT(CTemplatorConcept::ITextStreamWrapper, Write, 2),
  };
  for (const Row& row : rows) EXPECT_EQ(row.expected, row.slot) << row.operation;
}

}  // namespace
}  // namespace test
