#include "tools/orvctl/unknown_columns.h"

#include <algorithm>

namespace orvctl {
namespace {

constexpr size_t kMostNamed = 20;
constexpr size_t kMostOverheard = size_t{256} << 10;

class Overhearing final : public formats::ByteSource {
 public:
  Overhearing(std::unique_ptr<ByteSource> source, std::shared_ptr<std::string> heard)
      : source_(std::move(source)), heard_(std::move(heard)) {}

  std::optional<size_t> Read(char* bytes, size_t size) override {
    const std::optional<size_t> read = source_->Read(bytes, size);
    heard_->append(bytes, std::min(read.value_or(0), kMostOverheard - heard_->size()));
    return read;
  }

 private:
  const std::unique_ptr<ByteSource> source_;
  const std::shared_ptr<std::string> heard_;
};

// Half a character at the end could make the rest look like another character set.
std::string_view WholeLines(std::string_view text) {
  if (text.size() < kMostOverheard) return text;
  const size_t end = text.rfind('\n');
  constexpr size_t kUnit = 2;  // of UTF-16
  return text.substr(0, (end == std::string_view::npos ? text.size() : end) / kUnit * kUnit);
}

}  // namespace

Message TellOfColumns(const std::string& file, const std::vector<std::string>& names, Columns columns) {
  std::string list;
  for (size_t i = 0; i < std::min(names.size(), kMostNamed); ++i)
    list += (i == 0 ? "'" : ", '") + names[i] + "'";
  if (names.size() > kMostNamed) list += " and " + std::to_string(names.size() - kMostNamed) + " more";
  const bool isOne = names.size() == 1;
  return {std::to_string(names.size()) + (isOne ? " column" : " columns") + " of '" + file +
          (isOne ? "' was" : "' were") + " not understood: " + list +
          (columns == Columns::kKept ? "; what is in it is kept as it is, as a line of each contact's card"
                                     : "; what is in it is left out") +
          "; --map FILE says what it is"};
}

std::unique_ptr<formats::ByteSource> Overheard::Pass(std::unique_ptr<formats::ByteSource> source) {
  return std::make_unique<Overhearing>(std::move(source), beginning_);
}

std::vector<std::string> Overheard::UnknownColumns(const formats::ReadOptions& options) const {
  formats::MemorySource source(WholeLines(*beginning_));
  formats::OpenResult result = formats::OpenResult::kOk;
  const auto reader = formats::ContactReader::Open(source, options, &result);
  if (!reader || reader->format() != formats::FileFormat::kCsv) return {};
  formats::Contact contact;
  for (auto read = reader->Next(&contact);
       read != formats::ReadResult::kEnd && read != formats::ReadResult::kFailed;
       read = reader->Next(&contact)) {
  }
  return reader->unknownColumns();
}

}  // namespace orvctl
