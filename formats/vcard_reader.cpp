// The records of a vCard file, one after the other.
#include "formats/card_reader.h"
#include "formats/reader_base.h"
#include "formats/text_codec.h"

namespace formats {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

std::string_view WithoutMark(std::string_view line) {
  return line.substr(0, kByteOrderMark.size()) == kByteOrderMark ? line.substr(kByteOrderMark.size()) : line;
}

bool IsBlankChar(char c) { return c == ' ' || c == '\t'; }

// Whether the line is an agent's without a value: the record that follows is part of this one.
bool IsAgentLine(std::string_view line) {
  constexpr std::size_t kLongest = 64;
  if (line.size() > kLongest || !ContainsFolded(line, "AGENT")) return false;
  const auto parts = SplitVCardLine(line);
  return parts && EqualsFolded(parts->name, "AGENT") && TrimBlanks(parts->value).empty();
}

class VCardReader final : public LineReaderBase {
 public:
  VCardReader(std::unique_ptr<TextInput> input, std::string charset)
      : LineReaderBase(std::move(input)), charset_(std::move(charset)) {}

  FileFormat format() const override { return FileFormat::kVCard; }
  ReadResult Next(Contact* contact) override;

 private:
  enum class Delimiter { kNone, kBegin, kEnd };

  Delimiter Classify(std::string_view line);
  ReadResult OnBegin();
  ReadResult OnEnd(Contact* contact);
  void OnLine(std::string_view line);
  ReadResult OnLast(ReadResult result);
  void Begin();
  std::string NameOfRecord() const;
  void Append(std::string_view line);

  const std::string charset_;
  std::string record_;
  std::size_t depth_ = 0;  // 1 within a record, more within an agent's
  bool isTooLarge_ = false, isVersion21_ = false, afterAgent_ = false;
  bool mayContinue_ = false;  // a line that begins with a blank belongs to the one before
  std::uint64_t begin_ = 0;   // of the record that is being read
  std::uint64_t stray_ = 0;   // first line of text between records
  ReadResult last_ = ReadResult::kRecord;
};

ReadResult VCardReader::Next(Contact* contact) {
  if (last_ != ReadResult::kRecord) return OnLast(last_);
  for (;;) {
    const LineInput::Step step = lines_.Next();
    if (step == LineInput::Step::kFailed) return OnLast(ReadResult::kFailed);
    if (step == LineInput::Step::kEnd) return OnLast(ReadResult::kEnd);
    ReadResult result = ReadResult::kEnd;  // nothing to tell yet
    switch (Classify(lines_.line())) {
      case Delimiter::kBegin:
        result = OnBegin();
        break;
      case Delimiter::kEnd:
        result = OnEnd(contact);
        break;
      case Delimiter::kNone:
        OnLine(lines_.line());
        break;
    }
    if (result != ReadResult::kEnd) return result;
  }
}

// A line that goes on from the one before is neither.
VCardReader::Delimiter VCardReader::Classify(std::string_view line) {
  if (line.empty() || (IsBlankChar(line.front()) && mayContinue_)) return Delimiter::kNone;
  if (IsVCardBegin(line)) return Delimiter::kBegin;
  return IsVCardEnd(line) ? Delimiter::kEnd : Delimiter::kNone;
}

// Of one without an end, as far as it goes.
std::string VCardReader::NameOfRecord() const {
  Contact contact;
  const VCardVersion version = isVersion21_ ? VCardVersion::k21 : VCardVersion::k30OrLater;
  return ReadCardLines(record_, version, charset_, &contact) ? contact.name : std::string();
}

void VCardReader::Begin() {
  record_.clear();
  depth_ = 1;
  isTooLarge_ = isVersion21_ = afterAgent_ = mayContinue_ = false;
  begin_ = lines_.number();
  hasRecognised_ = true;
}

ReadResult VCardReader::OnBegin() {
  if (depth_ > 0 && afterAgent_) {
    Append(lines_.line());
    ++depth_;
    afterAgent_ = mayContinue_ = false;
    return ReadResult::kEnd;
  }
  const std::uint64_t begun = depth_ > 0 ? begin_ : 0, stray = std::exchange(stray_, 0);
  const std::string name = begun != 0 ? NameOfRecord() : std::string();
  Begin();
  if (begun != 0)
    return Reject(begun, RejectReason::kNoEnd, "the record has no end before the next one begins", name);
  if (stray != 0) return Reject(stray, RejectReason::kNotARecord, "text that belongs to no record");
  return ReadResult::kEnd;
}

ReadResult VCardReader::OnEnd(Contact* contact) {
  mayContinue_ = afterAgent_ = false;
  if (depth_ == 0) {
    if (stray_ == 0) stray_ = lines_.number();
    return ReadResult::kEnd;
  }
  if (--depth_ > 0) {
    Append(lines_.line());
    return ReadResult::kEnd;
  }
  if (isTooLarge_) return Reject(begin_, RejectReason::kTooLarge, "the record is larger than 4 MB");
  const VCardVersion version = isVersion21_ ? VCardVersion::k21 : VCardVersion::k30OrLater;
  first_ = begin_;
  if (ReadCardLines(record_, version, charset_, contact)) return ReadResult::kRecord;
  return Reject(begin_, RejectReason::kNameless, "the record has no name, company, address or number");
}

void VCardReader::OnLine(std::string_view line) {
  const bool isBlank = TrimBlanks(line).empty();
  if (depth_ == 0) {
    if (!isBlank && stray_ == 0 && !TrimBlanks(WithoutMark(line)).empty()) stray_ = lines_.number();
    mayContinue_ = !isBlank;
    return;
  }
  Append(line);
  const bool isContinuation = mayContinue_ && !line.empty() && IsBlankChar(line.front());
  mayContinue_ = !line.empty() && (isContinuation || !isBlank);
  if (isBlank || isContinuation) return;
  afterAgent_ = IsAgentLine(line);
  if (depth_ > 1 || FoldAscii(line.front()) != 'v') return;
  const auto parts = SplitVCardLine(line);
  if (parts && EqualsFolded(parts->name, "VERSION")) isVersion21_ = TrimBlanks(parts->value) == "2.1";
}

void VCardReader::Append(std::string_view line) {
  isTooLarge_ |= lines_.isOverlong() || record_.size() + line.size() > kMaxRecordSize;
  if (isTooLarge_) return;
  record_.append(line);
  record_ += '\n';
}

// What is left unfinished is told before the end is.
ReadResult VCardReader::OnLast(ReadResult result) {
  last_ = result;
  const std::uint64_t stray = std::exchange(stray_, 0);
  if (result == ReadResult::kFailed) return result;
  if (std::exchange(depth_, 0) > 0)
    return Reject(begin_, RejectReason::kNoEnd, "the file ends before the record does", NameOfRecord());
  if (stray != 0) return Reject(stray, RejectReason::kNotARecord, "text that belongs to no record");
  return result;
}

}  // namespace

std::unique_ptr<ContactReader> OpenVCardReader(std::unique_ptr<TextInput> input, const ReadOptions& options) {
  const bool named = !input->isUtf16();
  return std::make_unique<VCardReader>(std::move(input), named ? options.charset : std::string());
}

}  // namespace formats
