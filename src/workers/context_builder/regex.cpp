#define PCRE2_CODE_UNIT_WIDTH 8
#include "workers/context_builder/regex.h"

#include <pcre2.h>

#include <stdexcept>
#include <string>

namespace tarnwick {
namespace {

PCRE2_SPTR code_units(std::string_view text) {
  return reinterpret_cast<PCRE2_SPTR>(
      text.data());  // NOLINT(*-reinterpret-cast): the library's character type
}

struct FreeMatchData {
  void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
};

/// Room for the offsets of a match, one per thread: every pattern has at most MAX_GROUPS.
pcre2_match_data* match_data() {
  thread_local const std::unique_ptr<pcre2_match_data, FreeMatchData> data(
      pcre2_match_data_create(Match::MAX_GROUPS, nullptr));
  if (!data) throw std::bad_alloc();
  return data.get();
}

std::uint32_t compile_options(Pattern::Flags flags) {
  std::uint32_t options = PCRE2_UTF | PCRE2_NO_UTF_CHECK;
  if ((flags & Pattern::CASELESS) != 0) options |= PCRE2_CASELESS;
  if ((flags & Pattern::DOT_ALL) != 0) options |= PCRE2_DOTALL;
  return options;
}

}  // namespace

void Pattern::Free::operator()(pcre2_real_code_8* code) const {
  pcre2_code_free(code);
}

Pattern::Pattern(std::string_view source, Flags flags, std::string_view needle) : needle_(needle) {
  int error = 0;
  PCRE2_SIZE at = 0;
  pcre2_compile_context* context = pcre2_compile_context_create(nullptr);
  pcre2_set_newline(context, PCRE2_NEWLINE_LF);
  code_.reset(pcre2_compile(code_units(source), source.size(), compile_options(flags), &error, &at, context));
  pcre2_compile_context_free(context);
  if (!code_) {
    throw std::logic_error("pattern " + std::string(source) + ": error " + std::to_string(error) + " at " +
                           std::to_string(at));
  }
  pcre2_jit_compile(code_.get(),
                    PCRE2_JIT_COMPLETE);  // where there is no such compiler, patterns are interpreted
}

std::optional<Match> Pattern::search(std::string_view subject, std::size_t start) const {
  if (subject.find(needle_, start) == std::string_view::npos) return std::nullopt;
  pcre2_match_data* data = match_data();
  const int count =
      pcre2_match(code_.get(), code_units(subject), subject.size(), start, PCRE2_NO_UTF_CHECK, data, nullptr);
  if (count <= 0) return std::nullopt;
  const PCRE2_SIZE* offsets = pcre2_get_ovector_pointer(data);
  Match match;
  for (std::size_t group = 0; group < static_cast<std::size_t>(count); ++group) {
    if (offsets[2 * group] != PCRE2_UNSET)
      match.groups.at(group) = {offsets[2 * group], offsets[2 * group + 1]};
  }
  return match;
}

}  // namespace tarnwick
