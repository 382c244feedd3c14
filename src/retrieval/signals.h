// What speaks for a symbol, and how it becomes one number.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tarnwick::retrieval {

/// Why a symbol may be what a task is about. Each signal lies between 0 (nothing) and 1 (the most that any
/// symbol gets for this task, unless it says otherwise).
struct Signals {
  double text = 0;      ///< the task's words in the symbol's own text: BM25, names weigh more than bodies
  double file = 0;      ///< the task's words in the whole file: BM25
  double history = 0;   ///< past commits with such a subject changed the file
  double touched = 0;   ///< past commits with such a subject changed the symbol
  double uses = 0;      ///< it calls a symbol with much text
  double used = 0;      ///< a symbol with much text uses it
  double path = 0;      ///< the task's words, rare ones counting more, in the path
  double area = 0;      ///< share of the words before the task's colon ("fix(area): …") that the path holds
  double exact = 0;     ///< the task writes its name; 1 for a name that only one symbol bears
  double named = 0;     ///< the task's words in its name: BM25
  double callable = 0;  ///< 1 for functions and methods: where most work is done
  double size = 0;      ///< its length: the more lines, the more there is to change
  double place = 1;     ///< factor: below 1 for tests, examples and other code that serves the main code
};

/// One of them, for those who print or tune them.
struct SignalInfo {
  std::string_view name;
  double Signals::*value;
  double weight;
};

/// All signals that are added up, `place` aside. The weights were chosen on the history of three dozen public
/// repositories, to one significant digit: the figures lie on a plateau, where a finer choice only fits the
/// sample.
inline constexpr std::array SIGNALS = {
    SignalInfo{"text", &Signals::text, 1.0},         SignalInfo{"file", &Signals::file, 0.6},
    SignalInfo{"history", &Signals::history, 0.5},   SignalInfo{"touched", &Signals::touched, 0.4},
    SignalInfo{"uses", &Signals::uses, 0.3},         SignalInfo{"used", &Signals::used, 0.3},
    SignalInfo{"path", &Signals::path, 0.3},         SignalInfo{"area", &Signals::area, 0.6},
    SignalInfo{"exact", &Signals::exact, 0.5},       SignalInfo{"named", &Signals::named, 0.3},
    SignalInfo{"callable", &Signals::callable, 0.4}, SignalInfo{"size", &Signals::size, 0.3},
};

/// The fused score: the weighted sum times `place`.
double fold(const Signals& signals);

/// Signals::size of a symbol of that many lines.
double size_of(std::int64_t lines);

/// Lets files take turns: the score of a file's symbol behind others of the same file, `behind` in number,
/// among those of the whole ranking. Otherwise the symbols of one file would flood a pack.
double spread(double score, std::size_t behind);

}  // namespace tarnwick::retrieval
