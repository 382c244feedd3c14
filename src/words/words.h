// Texts as the words that search compares.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <type_traits>

namespace tarnwick::words {

/// Words longer than this many bytes (encoded data, generated names) are not words of a search.
inline constexpr std::size_t MAX_WORD_BYTES = 64;

/// A reference to a callable that takes each word. The word's characters live until the callable returns; the
/// callable must outlive the call it is handed to.
class WordSink {
 public:
  template <class Callable>
    requires(!std::is_same_v<std::remove_cvref_t<Callable>, WordSink>)
  WordSink(Callable&& callable)  // NOLINT(google-explicit-constructor,bugprone-forwarding-reference-overload)
      : callable_(const_cast<void*>(static_cast<const void*>(std::addressof(callable)))),  // NOLINT
        call_([](void* target, std::string_view word) {
          (*static_cast<std::remove_reference_t<Callable>*>(target))(word);
        }) {}

  void operator()(std::string_view word) const { call_(callable_, word); }

 private:
  void* callable_;
  void (*call_)(void*, std::string_view);
};

/// Hands `sink` the identifiers of prose or code, in order and as they are written: what split_identifiers
/// takes apart, each for itself.
void identifiers(std::string_view text, WordSink sink);

/// Hands `sink` the words of prose or code, in order, lowercased. An identifier is cut at underscores,
/// changes of case and digits (`HTTPServer_v12` gives http, server, 12); one of several parts comes whole
/// too, before its parts and without its underscores, so that `read_file`, `readFile` and `READ_FILE` share
/// the word `readfile`. Parts of one character are left out. No allocation per word, but for words outside
/// ASCII.
void split_identifiers(std::string_view text, WordSink sink);

/// split_identifiers without the whole identifiers: the parts alone.
void split_parts(std::string_view text, WordSink sink);

/// The part of a lowercase word that its inflections share (`parse`, `parsed`, `parsing` → `pars`): a prefix
/// of it.
std::string_view stem(std::string_view word);

/// split_identifiers with each word stemmed: the words that the text index stores and is asked for.
void search_words(std::string_view text, WordSink sink);

/// Whether a word of a task says nothing about what the task is about. `task_verbs` tells whether the verbs
/// that open tasks ("add", "fix", "support") count too. `word` is lowercase and not stemmed.
bool is_common_word(std::string_view word, bool task_verbs);

}  // namespace tarnwick::words
