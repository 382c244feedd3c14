// Names as the source writes them, with their scopes, generics and operators, taken apart.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>
#include <string_view>

#include "extraction/raw_facts.h"
#include "languages/languages.h"

namespace tarnwick::extraction {

constexpr std::size_t MAX_PREFIX_BYTES = 512;  ///< scopes nested deeper add nothing: names stay bounded

/// `Foo<T>::bar` as `Foo::bar`: arguments of generics and white space left out, whatever parts it by
/// `separator`. Of a long one the beginning.
std::string plain_scope(std::string_view written, std::string_view separator);

/// `parts` with `separator` between them, empty ones left out.
std::string joined(std::initializer_list<std::string_view> parts, std::string_view separator);

/// What stands before a used name; empty when it is long or of several lines, and so says nothing that could
/// be looked up. A view into `written`.
std::string_view plain_qualifier(std::string_view written);

/// The last part of a module's or file's name: `c` of `a.b.c`, `a/b/c` and `a::b::c`. A view into `name`, all
/// of it when nothing stands behind the last separator.
std::string_view last_part(std::string_view name);

/// Whether the name is written as constants are, as in `MAX_BYTES`: upper-case letters and no lower-case
/// ones.
bool is_upper_case(std::string_view name);

/// Narrows `definition.name` to the name proper and gives the scopes written before it to
/// `definition.qualifier`: `void Foo::bar()` names the scope that it belongs to.
void split_name(RawDefinition& definition, const languages::Language& language, std::string_view text);

}  // namespace tarnwick::extraction
