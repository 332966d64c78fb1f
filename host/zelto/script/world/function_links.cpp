#include "script/world/function_links.h"

#include <new>

#include "script/text.h"

namespace zelto::script {
namespace {

// The constructors of the four kinds of functions. Each is reached from the prototype of its kind alone, but for the
// first, which is a name of the global object as well, and from which the others inherit.
constexpr std::u16string_view kSource =
    uR"js((function (native) {
"use strict";
const { apply, construct, defineProperty, getOwnPropertyDescriptor, getPrototypeOf, setPrototypeOf } = Reflect;
const replace = (prototype, above) => {
  const { constructor: original } = prototype;
  const instead = function (parameter) {
    native.show_names();
    return construct(original, arguments, new.target === undefined ? original : new.target);
  };
  defineProperty(instead, "name", { value: original.name });
  defineProperty(instead, "prototype", { value: prototype, writable: false });
  if (above !== undefined) setPrototypeOf(instead, above);
  defineProperty(prototype, "constructor", { value: instead });
  return instead;
};
const functions = Function.prototype;
const above = replace(functions);
defineProperty(globalThis, "Function", { value: above });
for (const one of [async function () {}, function* () {}, async function* () {}]) replace(getPrototypeOf(one), above);

const { get: caller_of } = getOwnPropertyDescriptor(functions, "caller");
const own = {
  get caller() {
    const found = apply(caller_of, this, []);
    return native.is_page(found) ? null : found;
  },
};
defineProperty(functions, "caller", { get: getOwnPropertyDescriptor(own, "caller").get });
}))js";

}  // namespace

std::u16string_view FunctionLinks::source() { return kSource; }

void FunctionLinks::replace(JSContextRef context) {
  JSValueRef made = evaluate(context, kSource);
  JSValueRef native = property(context, JSContextGetGlobalObject(context), "$zelto");
  JSValueRef failure = nullptr;
  if (made) JSObjectCallAsFunction(context, object_of(made), nullptr, 1, &native, &failure);
  if (!made || failure) throw std::bad_alloc();  // or without stack
}

}  // namespace zelto::script
