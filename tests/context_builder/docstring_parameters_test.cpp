#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/fakes.h"

namespace tarnwick::testing {
namespace {

/// "name|type|description", a "-" for no type.
std::vector<std::string> parameters(std::string_view docstring) {
  std::vector<std::string> all;
  for (const Parameter& p : ContextBuilder::_extract_parameters(docstring)) {
    all.push_back(p.name + "|" + p.type.value_or("-") + "|" + p.description);
  }
  return all;
}

struct Case {
  std::string docstring;
  std::vector<std::string> found;
};

TEST(DocstringParameters, ReadsEachStyleAsItsPatternSays) {
  const std::vector<Case> cases = {
      {"", {}},
      {"Does x: nothing.", {}},
      {"Args:\n  x (int): The x.\n  y: The y.\n", {"x|int|The x.", "y|-|The y."}},
      {"Args:\n    x: One\n        more of it\n    y: Two",
       {"x|-|One"}},  // no colon at all: the section ends
      {"Args:\n    x: One\n        see: more\n", {"x|-|One", "see|-|more"}},
      {"Args:\n  x: X\n\nReturns: The keywords.\n", {"x|-|X", "Returns|-|The keywords."}},
      {"Args:\n  x: X\n\nReturns:\n  The keywords.\n", {"x|-|X"}},
      {"Args:\n  x: X\ny: flush left\n", {"x|-|X"}},
      {"Args:\n\nx: X", {"x|-|X"}},
      {"Args:\nx: X", {}},
      {"Args: \n  x: a:b\n", {"x|-|a:b"}},
      {"Args:\n  x:\n  y: Y\n", {}},
      {"Keyword aRg\u017F:\n  x ( ): X\nArgs:\n  y: Y", {"x||X"}},
      {"Args:\n  *rest: R\nArgs:\n  y: Y", {"y|-|Y"}},
      {"Args:\n  x: X\n :param x: again\n :param z: Z", {"x|-|X", "z|-|Z"}},
      {"Args:\n  \u00E9t\u00E9 (a,\u00A0b): \u2003E\u0301\x1F", {"\u00E9t\u00E9|a,\u00A0b|E\u0301"}},
      {"Args:\n  a\x1C(t): A\u2028b", {"a|t|A\u2028b"}},
      {":param x: The x.\n:type x: int\n", {"x|int|The x."}},
      {":type x: int\n:type x: str\n:param x: X\n  and more\n:returns: y", {"x|str|X\n  and more"}},
      {":param int x: X", {}},
      {":param x:\n:param y: Y\n", {"x|-|:param y: Y"}},  // an empty field swallows the next one
      {"@param {string} name The name.\n@param other O\n * more",
       {"name|string|The name.", "other|-|O\n * more"}},
      {"@param { } a mail a@b.c\n@param a again", {"a||mail a"}},
      {"@param {a @param b c} d e f@", {"d|a @param b c|e f"}},
      {"@param {} a b", {}},
      {"@param x @param y z", {"x|-|@param y z"}},
      {"@param {a\n@param {b} c d", {"c|a\n@param {b|d"}},
      {std::string(":param a\0: A", 12), {}},
      {":param a: \xED\xA0\x80 A", {"a|-|\xED\xA0\x80 A"}},
      {":param a\xED\xB2\x80: A", {}},
      {"Args:\n\xFF", {}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(parameters(c.docstring), c.found) << c.docstring;
  }
}

TEST(DocstringParameters, ReadsOrdinaryDocstringsOfAnySizeWhole) {
  std::string google = "Args:\n";
  std::string sphinx;
  std::string tags;
  for (int i = 0; i < 10000; ++i) {
    const std::string name = "p" + std::to_string(i);
    google += "    " + name + " (int): The value.\n";
    sphinx.append(":param ").append(name).append(": The value.\n:type ").append(name).append(": int\n");
    tags += "@param {int} " + name + " The value.\n";
  }
  for (const std::string& docstring : {google, sphinx, tags}) {
    const auto found = ContextBuilder::_extract_parameters(docstring);
    ASSERT_EQ(found.size(), 10000U) << docstring.substr(0, 20);
    EXPECT_EQ(found.back(), (Parameter{"p9999", "The value.", "int"}));
  }
  EXPECT_EQ(parameters(":param x: " + std::string(3000000, 'y')).at(0).size(), 3000004U);
}

}  // namespace
}  // namespace tarnwick::testing
