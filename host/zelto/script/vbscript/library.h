// The library that compiled VBScript calls, written in JavaScript: `$zelto_vb`, here $vb. It is made in a world when a
// program first asks for it, and is frozen, with all that it leads to: no page can change it for the next one. What a
// page does to it, such as errors and the seed of Rnd, is forgotten when the next one begins.
//
// Values
//   Empty, Null              undefined, null
//   Nothing                  $vb.nothing, one object
//   Boolean, String          boolean, string
//   Integer, Long, Double    numbers: an integral one is an Integer within 16 bits and a Long within 32, any other a
//                            Double. Sums of such numbers are such numbers
//   any other number         an immutable box with the number in `v`, of one of the classes Lng (a Long that would read
//                            as an Integer), Dbl (a Double that would read as an integral one), Byt, Sng, Cur (`n` is
//                            a BigInt, of ten-thousandths) and Dat (the serial date)
//   bytes                    a string, two bytes a unit; with an odd number of bytes a ByteString (`b`, a byte a unit)
//   an array                 VbArray: `d` all elements, the first index varying fastest, `b` the upper bounds, `fixed`
//   an array of bytes        Uint8Array
//   an omitted argument      $vb.missing
//
// Operators: add sub mul div idiv mod pow neg cat, not and or xor eqv imp, is, eq ne lt gt le ge (a, b, written) where
// `written` is 1 if one operand is a number or date that is written down as such, and 2 if it is a text. cond(v) is the
// boolean of a condition. num(v) is a JavaScript number, forn(from, to, step) what a For loop counts: { at, to, step,
// box }, of numbers, where `box` is undefined or the function that makes of one what the counter is; next(v, step) is
// the next value of a counter that the loop's statements have changed.
//
// Variables: val(v) is what Let assigns, setv(v) what Set does. ref(get, set) and temp(v) are arguments by reference,
// objects with the accessor `v`; refix(a, ...i) is one to an element. arg(v) and own(v) are what a parameter is, by
// reference and by value, that a procedure assigns to. byref(f, [0, 2]) answers f, whose parameters of these numbers
// are such objects; who calls it by a value (get, call, ix) may give plain ones. again(prototype, "key", "other", …)
// gives members of a class other names too, under which the compiled script asks for them first.
//
// Arrays: dim(fixed, ...upper), redim(old, preserve, ...upper) and erase(a) answer the array. ix(a, ...i) is what
// parentheses behind a value mean: an element, the default member, a call. putix(a, v, ...i) and setix(a, v, ...i)
// assign to it by Let and Set; ix1(a, i) and put1(a, v, i) are these for one index. each(v) is what For Each goes
// through, an array or an iterable.
//
// Members: get(o, name, ...arguments) in an expression, call(o, name, ...arguments) as a statement, let(o, name, v,
// ...arguments), set(o, name, v, ...arguments). create(name) is CreateObject. ask(o, name, places, ...arguments) is a
// call with arguments that are variables, whose places are bits: where `answers` has elements then, an object of the
// host has assigned to some of them, and answer(place, old) is what the variable has to be. The program empties it.
//
// Classes extend Instance. Names in small letters are keys of the class:
//   "name"(…)                     a public Sub or Function
//   "get name", "let name" and    Property procedures that are public; the value comes last
//   "set name"
//   this["name"] = undefined      a public variable, which the constructor makes
//   " name", " default"           properties of the prototype: the name of the class, and the default member's key
//   "class_initialize"(),         called by make(Class), where they are
//   "class_terminate"()
// What is private has any other key with a blank in it. A key "constructor" must be computed. make(Class) is New.
// terminate() calls class_terminate of all instances that have yet to end, in the order in which they were made.
//
// References: count() has a program's references to instances counted, so that they end with the last one; it comes
// before all else. hold(v) is v, which somebody has from now on, and drop(v) says that one of these has it no more;
// swap(x = hold(v), old, …) drops the second. keep(v) is v, which the statement has until it has ended: drain(base)
// drops what `pool` has from that length on. after(base, v) is v, after that; settle(base) is the same after an error.
// What is made, and the result of a procedure, is in the pool already. leave(base, result, [variables], failure) ends a
// procedure that began with a pool of that length, where `failure` is undefined or { error }.
//
// Errors: raise(number, description) throws a VbError. caught(e) fills err, the Err object, from whatever was thrown;
// it throws e anew where that may not be caught. clear() is what leaving a procedure and On Error do to it.
//
// Code of text: compile(text, kind, names) is what eval takes: vbscript/fragment.h.
//
// Functions: fn.left, fn.instr …, by their names in small letters; getref(f), where exact(f) is a procedure, which does
// not take any number of arguments; regexp() is a new RegExp. write(v) is Response.Write(v), out(v) is `<%= v %>`,
// text(v) the text that they write.
#pragma once

#include <array>
#include <span>
#include <string>

#include "script/jsc.h"
#include "script/text.h"

namespace zelto::script {

class Engine;

namespace vbscript {

// A function of (native, prelude, host_prototype): what make_natives() gives, what the prelude hands over, and the
// prototype of automation objects. It answers an array of the names below, the first of which is $zelto_vb.
std::u16string library_source();

// The one of a world. What functions of it answer is null with an exception.
class Library {
 public:
  Library(Engine& engine, JSContextRef context, JSValueRef prelude, JSValueRef host_prototype);
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  // $zelto_vb, and the function that is called before each program.
  JSObjectRef object() const noexcept { return part(Part::object); }
  JSObjectRef begin() const noexcept { return part(Part::begin); }
  JSValueRef nothing() const noexcept { return part(Part::nothing); }
  JSValueRef missing() const noexcept { return part(Part::missing); }
  bool is_missing(JSValueRef value) const noexcept { return value == missing(); }

  // Of an object that has a type of its own outside of the script, an array of that type and what it needs; undefined
  // for any other.
  JSValueRef pack(JSValueRef value, JSValueRef* exception) const;
  // A number of a kind that plain numbers do not have, or an amount in ten-thousandths, as text.
  JSValueRef box(int kind, JSValueRef number, JSValueRef* exception) const;
  // An instance of a class of VBScript's, as components see it.
  enum class Member { not_an_instance, none, method, value };
  Member member(JSObjectRef object, JSValueRef name) const;
  // Of an instance, of (object, name, …arguments) and (object, name, whether by Set, value, …arguments); the name is
  // undefined for the default member.
  JSObjectRef get() const noexcept { return part(Part::get); }
  JSObjectRef put() const noexcept { return part(Part::put); }
  // Calls a function, of (function, this, …arguments).
  JSObjectRef invoke() const noexcept { return part(Part::invoke); }
  // A RegExp that an object stands for, of (member, pattern, global, ignorecase, multiline, …arguments); the member is
  // "test", "execute" or "replace". Of matches it makes one array: how many places each of them takes in it, and of
  // each its index, its length, its text and its parts.
  JSObjectRef regexp() const noexcept { return part(Part::regexp); }
  // An argument whose caller wants back what `v` is then; `given` is what it was.
  JSValueRef lend(JSValueRef value, JSValueRef* exception) const;
  JSValueRef array(JSValueRef bounds, JSValueRef elements, JSValueRef* exception) const;

 private:
  enum class Part { object, begin, pack, box, array, nothing, missing, member, get, put, invoke, lend, regexp, count };
  JSObjectRef part(Part which) const noexcept { return parts_[static_cast<std::size_t>(which)]; }
  JSValueRef call(Part which, std::span<const JSValueRef> arguments, JSValueRef* exception) const;

  JSContextRef context_;
  std::array<JSObjectRef, static_cast<std::size_t>(Part::count)> parts_{};  // these are protected
};

}  // namespace vbscript
}  // namespace zelto::script
