// Programs at random that hand instances about, beside the same done with shared pointers here: these tell after each
// statement which instances have ended.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "zelto/site/page_run_fixture.h"

namespace {

class Model {
 public:
  struct Instance {
    Instance(Model& in, int number) : model(in), name(number) { model.living_.push_back(this); }
    ~Instance() {
      std::erase(model.living_, this);
      model.said_.push_back(name);
    }
    Instance(const Instance&) = delete;
    Instance& operator=(const Instance&) = delete;

    Model& model;
    int name;
    std::shared_ptr<Instance> fields[2];
    std::vector<std::shared_ptr<Instance>> list = std::vector<std::shared_ptr<Instance>>(2);
  };
  using Held = std::shared_ptr<Instance>;

  // What has ended since it was asked last, in order.
  std::string take_said() {
    std::ranges::sort(said_);
    std::string all;
    for (const int one : std::exchange(said_, {})) all += "-" + std::to_string(one);
    return all;
  }
  // Those that are left end in the order in which they were made.
  std::string end() {
    std::string all;
    for (const Instance* one : living_) all += "-" + std::to_string(one->name);
    for (Instance* one : living_) {  // which may hold each other
      for (Held& field : one->fields) kept_.push_back(std::move(field));
      for (Held& element : one->list) kept_.push_back(std::move(element));
    }
    kept_.clear();
    return all;
  }

  Held make() { return std::make_shared<Instance>(*this, ++made_); }
  int last() const { return made_; }

 private:
  int made_ = 0;
  std::vector<int> said_;
  std::vector<Instance*> living_;
  std::vector<Held> kept_;

 public:  // the others are there for as long as there are any of these
  std::vector<Held> variables = std::vector<Held>(3);
  std::vector<Held> elements = std::vector<Held>(3);
  std::vector<Held> copies;  // the elements of another array; none where it is no array
};

// A place that can have an instance: how it is written, and where it is here.
struct Location {
  std::string text;
  Model::Held* held;
  bool is_reference;  // a procedure may assign to it
};

class Writer {
 public:
  explicit Writer(unsigned seed) : random_(seed) {}

  void write(int statements) {
    for (int i = 0; i < statements; ++i) {
      statement();
      script_ += "\nResponse.Write \";\"\n";
      expected_ += model_.take_said() + ";";
    }
    script_ += "Response.Write \"end\"\n";
    expected_ += "end";
    expected_ += model_.end();
  }
  const std::string& script() const { return script_; }
  const std::string& expected() const { return expected_; }

 private:
  std::size_t below(std::size_t count) { return random_() % count; }

  Location place() {
    Location at = variable();
    while (*at.held && below(2) == 0) {
      Model::Instance& in = **at.held;
      const std::size_t which = below(4);
      if (which < 2) at = {at.text + (which == 0 ? ".A" : ".B"), &in.fields[which], false};
      if (which > 1) at = {at.text + ".L(" + std::to_string(which - 2) + ")", &in.list[which - 2], false};
    }
    return at;
  }
  Location variable() {
    if (below(3) == 0) {
      const std::size_t i = below(model_.elements.size());
      return {"l(" + std::to_string(i) + ")", &model_.elements[i], true};
    }
    const std::size_t i = below(model_.variables.size());
    return {"v" + std::to_string(i), &model_.variables[i], true};
  }

  // An expression, and what it gives.
  std::string object(Model::Held* value, int depth = 0) {
    switch (below(depth > 2 ? 2 : 9)) {
      case 0:
      case 1:
      case 2: {
        const Location from = place();
        *value = *from.held;
        return from.text;
      }
      case 3:
        *value = model_.make();
        return "Made(" + std::to_string(model_.last()) + ")";
      case 4:
        return "Nothing";
      case 5:
        return "Pass(" + object(value, depth + 1) + ")";
      case 6:
        return "PassOn(" + object(value, depth + 1) + ")";
      case 7:
        return "Deep(" + object(value, depth + 1) + ", " + std::to_string(below(4)) + ")";
      default:
        *value = model_.make();
        (*value)->fields[0] = model_.make();
        return "Pair(" + std::to_string(model_.last() - 1) + ")";
    }
  }

  void set(const Location& to, const std::string& text, const Model::Held& value) {
    script_ += "Set " + to.text + " = " + text;
    *to.held = value;
  }

  void statement() {
    Model::Held value;
    switch (below(12)) {
      case 0:
      case 1:
      case 2:
      case 3: {
        const Location to = place();
        const std::string text = object(&value);
        return set(to, text, value);
      }
      case 4: {
        const Location to = variable();
        const std::string text = object(&value);
        script_ += "Put " + to.text + ", " + text;
        *to.held = value;
        return;
      }
      case 5: {
        script_ += "Use " + object(&value);
        return;
      }
      case 6: {
        script_ += "Fails " + object(&value) + " : Err.Clear";
        return;
      }
      case 7: {
        const Location a = variable();
        const Location b = variable();
        script_ += "Swap " + a.text + ", " + b.text;
        std::swap(*a.held, *b.held);
        return;
      }
      case 8:
        script_ += "m = l";
        model_.copies = model_.elements;
        return;
      case 9:
        if (below(2) == 0) {
          script_ += "m = 0";
          model_.copies.clear();
        } else {
          script_ += "Erase l : Fill";
          for (Model::Held& one : model_.elements) one = nullptr;
        }
        return;
      case 10: {
        const Location with = place();
        if (!*with.held) return;
        const Model::Held kept = *with.held;
        const std::string text = object(&value);
        script_ += "With " + with.text + " : Set .B = " + text + " : End With";
        kept->fields[1] = value;
        return;
      }
      default: {
        const Location to = variable();
        const std::string text = object(&value);
        script_ += "Execute \"Set " + to.text + " = " + text + "\"";
        *to.held = value;
      }
    }
  }

  std::mt19937 random_;
  Model model_;
  std::string script_;
  std::string expected_;
};

constexpr const char* kProcedures = R"(<%@ Language="VBScript" %><%
Class C
  Public N, A, B, L(1)
  Private Sub Class_Initialize
    Set A = Nothing : Set B = Nothing : Set L(0) = Nothing : Set L(1) = Nothing
  End Sub
  Private Sub Class_Terminate
    Response.Write "-" & N
    N = "early " & N
  End Sub
  Public Function Self
    Set Self = Me
  End Function
End Class
Function Made(n)
  Set Made = New C
  Made.N = n
End Function
Function Pair(n)
  Dim o
  Set o = Made(n)
  Set o.A = Made(n + 1)
  Set Pair = o
End Function
Function Pass(o)
  Set Pass = o
End Function
Function PassOn(ByVal o)
  Dim a(1)
  If o Is Nothing Then
    Set PassOn = Nothing
    Exit Function
  End If
  Set a(1) = o.Self
  Set o = Nothing
  Dim one
  For Each one In a
    If IsObject(one) Then
      With one
        Set PassOn = .Self
        Exit Function
      End With
    End If
  Next
End Function
Function Deep(o, n)
  Dim p
  Set p = o
  If n = 0 Then Set Deep = p Else Set Deep = Deep(p, n - 1)
End Function
Sub Put(to_, o)
  Set to_ = o
End Sub
Sub Swap(x, y)
  Dim o
  Set o = x
  Set x = y
  Set y = o
End Sub
Sub Use(o)
  Dim p, q(1)
  Set p = o
  Set q(1) = p
  If Not p Is Nothing Then If Left(p.N, 1) = "e" Then Response.Write p.N
End Sub
Sub Fails(o)
  Dim p
  Set p = Pass(o)
  Err.Raise 1000
End Sub
Sub Fill
  Set l(0) = Nothing : Set l(1) = Nothing : Set l(2) = Nothing
End Sub
Dim v0, v1, v2, l(2), m
Set v0 = Nothing : Set v1 = Nothing : Set v2 = Nothing : Fill
On Error Resume Next
)";

class VbScriptRandomLifetimes : public test::PageRunFixture {
 protected:
  // With the ends of one statement in the order of their numbers.
  static std::string in_order(const std::string& body) {
    std::string all;
    std::vector<int> numbers;
    for (std::size_t at = 0; at < body.size();) {
      if (body[at] == '-') {
        std::size_t digits = 0;
        numbers.push_back(std::stoi(body.substr(at + 1), &digits));
        at += digits + 1;
        continue;
      }
      std::ranges::sort(numbers);
      for (const int one : std::exchange(numbers, {})) all += "-" + std::to_string(one);
      all += body[at++];
    }
    for (const int one : numbers) all += "-" + std::to_string(one);  // after the end their order is known
    return all;
  }
};

TEST_F(VbScriptRandomLifetimes, AreThoseOfSharedPointers) {
  constexpr unsigned kPrograms = 40;
  constexpr int kStatements = 150;
  for (unsigned seed = 1; seed <= kPrograms; ++seed) {
    Writer writer(seed);
    writer.write(kStatements);
    const std::string body = run(kProcedures + writer.script() + "%>", "").body;
    ASSERT_EQ(writer.expected(), in_order(body)) << "seed " << seed << "\n" << writer.script();
  }
}

}  // namespace
