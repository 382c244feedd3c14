// Packs, rankings and their parts as the host's plain records.
#pragma once

#include "symbols.h"
#include "tarnwick/workers/context_builder.h"

namespace tarnwick::python {

/// Makes the three record classes, data classes of Python, and adds them to the module.
void add_record_types(py::handle module);

/// A new ContextPack; its indexing fields are left at their defaults.
py::object to_python(const ContextPack& pack);

py::object to_python(const std::vector<RankedSymbol>& ranked);
py::object to_python(const std::vector<Parameter>& parameters);
py::object to_python(const std::vector<RelatedSymbol>& related);
py::object to_python(const std::vector<Text>& texts);
/// Pairs of a row and its cost.
py::object to_python(const std::vector<ContextBuilder::CostedRow>& rows);

/// The keys and values that a pack, any object with its fields, is serialised as.
py::object pack_dict(py::handle pack);

}  // namespace tarnwick::python
