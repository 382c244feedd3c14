#include "tarnwick/models.h"

#include <utility>

namespace tarnwick {
namespace {

class OwnedString final : public Text::Owner {
 public:
  explicit OwnedString(std::string text) : text_(std::move(text)) {}
  std::string_view view() const { return text_; }

 private:
  std::string text_;
};

class PlainSymbol final : public Symbol {
 public:
  explicit PlainSymbol(SymbolFields fields) : fields_(std::move(fields)) {}

  std::optional<std::int64_t> id() const override { return fields_.id; }
  std::optional<std::int64_t> file_id() const override { return fields_.file_id; }
  const Text& name() const override { return fields_.name; }
  const Text& fqn() const override { return fields_.fqn; }
  const Text& kind() const override { return fields_.kind; }
  bool is_export() const override { return fields_.is_export; }
  std::int64_t start_line() const override { return fields_.start_line; }
  std::int64_t end_line() const override { return fields_.end_line; }
  const OptionalText& signature() const override { return fields_.signature; }
  const OptionalText& docstring() const override { return fields_.docstring; }
  bool docstring_truncated() const override { return fields_.docstring_truncated; }
  std::int64_t token_count() const override { return fields_.token_count; }

 private:
  SymbolFields fields_;
};

class PlainReference final : public Reference {
 public:
  explicit PlainReference(ReferenceFields fields) : fields_(std::move(fields)) {}

  Text usage_type() const override { return fields_.usage_type; }
  std::optional<CallerSymbol> caller_symbol() const override { return fields_.caller_symbol; }
  OptionalText context() const override { return fields_.context; }
  OptionalText path() const override { return fields_.path; }
  std::optional<std::int64_t> line() const override { return fields_.line; }

 private:
  ReferenceFields fields_;
};

}  // namespace

Text::Text(std::string text) {
  if (text.empty()) return;
  auto owned = std::make_shared<const OwnedString>(std::move(text));
  view_ = owned->view();
  owner_ = std::move(owned);
}

Text::Text(std::string_view text) : Text(std::string(text)) {}

SymbolPtr make_symbol(SymbolFields fields) {
  return std::make_shared<const PlainSymbol>(std::move(fields));
}

ReferencePtr make_reference(ReferenceFields fields) {
  return std::make_shared<const PlainReference>(std::move(fields));
}

}  // namespace tarnwick
