// The index of a vCard file: where its records lie and who is in them.
#include <algorithm>
#include <utility>

#include "formats/text_codec.h"
#include "formats/vcard.h"
#include "formats/vcard_lines.h"
#include "formats/vcard_record.h"

namespace formats {
namespace {

// A letter or digit, or any byte beyond ASCII, outside encodings and escapes proves that text will remain.
bool IsPlainlyNamed(const VCardLine& line) {
  if (!line.params.empty() || line.value.find('\\') != std::string_view::npos) return false;
  return std::any_of(line.value.begin(), line.value.end(), [](char c) {
    const char folded = FoldAscii(c);
    return (folded >= 'a' && folded <= 'z') || (c >= '0' && c <= '9') ||
           static_cast<unsigned char>(c) >= 0x80;
  });
}

uint32_t HashOf(std::string_view text) {  // FNV-1a
  uint32_t hash = 0x811C9DC5;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 0x01000193;
  return hash;
}

}  // namespace

// Walks the file once. A record without an end is given up where the next one begins.
class VCardIndexer {
 public:
  explicit VCardIndexer(VCardFile& file) : file_(file), reader_(file.text_) {}

  void Run() {
    while (reader_.Next()) {
      if (IsVCardBegin(reader_.line())) {
        OnBegin();
      } else if (IsVCardEnd(reader_.line())) {
        OnEnd();
      } else if (depth_ == 0) {
        inStrayText_ = true;
      } else {
        OnContent();
      }
    }
    GiveUp();
    SortKeys(file_.uids_);
    SortKeys(file_.emails_);
  }

 private:
  void OnBegin() {
    if (depth_ > 0 && afterAgent_) {
      ++depth_;
      afterAgent_ = false;
      return;
    }
    GiveUp();
    depth_ = 1;
    record_ = {};
    record_.begin = static_cast<uint32_t>(reader_.lineEnd());
    named_ = nameable_ = afterAgent_ = hasContent_ = misread_ = false;
    reader_.SetVersion(VCardVersion::k30OrLater);
    uidMark_ = file_.uids_.size();
    emailMark_ = file_.emails_.size();
    textMark_ = file_.keyText_.size();
  }

  void OnEnd() {
    afterAgent_ = false;
    if (depth_ == 0) inStrayText_ = true;
    if (depth_ == 1) Finish();
    if (depth_ > 0) --depth_;
    if (depth_ == 0 && inStrayText_) GiveUp();
  }

  void OnContent() {
    const std::optional<VCardLine> line = SplitVCardLine(reader_.line());
    afterAgent_ = false;
    if (depth_ > 1 || !line) return;
    const bool isFirst = !std::exchange(hasContent_, true);
    switch (FindVCardProperty(line->name)) {
      case VCardProperty::kVersion:
        return NoteVersion(*line, isFirst);
      case VCardProperty::kAgent:
        afterAgent_ = TrimBlanks(line->value).empty();
        return;
      case VCardProperty::kKind:
        record_.isGroup |= EqualsFolded(VCardText(*line, Version()).view(), "group");
        return;
      case VCardProperty::kUid:
        return AddKey(file_.uids_, StripUuidScheme(VCardText(*line, Version()).view()));
      case VCardProperty::kEmail:
        nameable_ = true;
        return AddKey(file_.emails_,
                      StripMailScheme(VCardText(*line, Version(), VCardLayout::kOneLine).view()));
      case VCardProperty::kFormattedName:
      case VCardProperty::kName:
      case VCardProperty::kNickname:
      case VCardProperty::kOrganisation:
        named_ = named_ || IsPlainlyNamed(*line);
        nameable_ = true;
        return;
      case VCardProperty::kPhone:
        nameable_ = true;
        return;
      default:
        return;
    }
  }

  void NoteVersion(const VCardLine& line, bool isFirst) {
    const VCardVersion before = Version();
    record_.isVersion21 = ReadVCardVersion(line) == VCardVersion::k21;
    misread_ |= !isFirst && Version() != before;
    reader_.SetVersion(Version());
  }

  void AddKey(std::vector<VCardFile::Key>& keys, std::string_view text) {
    if (text.empty()) return;
    const size_t begin = file_.keyText_.size();
    file_.keyText_ += text;
    for (size_t i = begin; i < file_.keyText_.size(); ++i) file_.keyText_[i] = FoldAscii(file_.keyText_[i]);
    keys.push_back({HashOf(std::string_view(file_.keyText_).substr(begin)), static_cast<uint32_t>(begin),
                    static_cast<uint32_t>(text.size()), static_cast<uint32_t>(file_.records_.size())});
  }

  // A version that comes late changes how the lines before it are to be read.
  void ReadAgain() {
    const VCard card = ParseVCardRecord(file_.TextOf(record_), Version());
    ForgetKeys();
    AddKey(file_.uids_, ToUtf8(card.uid));
    for (const std::u16string& email : card.emails) AddKey(file_.emails_, ToUtf8(email));
    record_.isGroup = card.isGroup;
  }

  void Finish() {
    record_.length = static_cast<uint32_t>(reader_.lineBegin()) - record_.begin;
    if (misread_) ReadAgain();
    // Where the raw text does not prove a name, only taking the record apart can tell.
    if (!named_ && (!nameable_ || ParseVCardRecord(file_.TextOf(record_), Version()).displayName.empty())) {
      return Drop();
    }
    file_.records_.push_back(record_);
  }

  void Drop() {
    ++file_.skipped_;
    ForgetKeys();
  }

  void ForgetKeys() {
    file_.uids_.resize(uidMark_);
    file_.emails_.resize(emailMark_);
    file_.keyText_.resize(textMark_);
  }

  void GiveUp() {
    if (depth_ > 0) Drop();
    if (depth_ == 0 && inStrayText_) ++file_.skipped_;
    depth_ = 0;
    inStrayText_ = false;
  }

  VCardVersion Version() const { return record_.isVersion21 ? VCardVersion::k21 : VCardVersion::k30OrLater; }

  // Texts are looked at only where hashes agree, so that text made to collide costs no more than any other.
  void SortKeys(std::vector<VCardFile::Key>& keys) const {
    std::sort(keys.begin(), keys.end(), [&](const VCardFile::Key& a, const VCardFile::Key& b) {
      if (a.hash != b.hash) return a.hash < b.hash;
      const int order = file_.TextOf(a).compare(file_.TextOf(b));
      return order != 0 ? order < 0 : a.record < b.record;
    });
  }

  VCardFile& file_;
  VCardLineReader reader_;
  VCardFile::Record record_;
  size_t depth_ = 0;  // 1 within a record, more within an agent's record
  bool named_ = false, nameable_ = false, afterAgent_ = false, inStrayText_ = false;
  bool hasContent_ = false, misread_ = false;
  size_t uidMark_ = 0, emailMark_ = 0, textMark_ = 0;
};

VCardFile VCardFile::FromBytes(std::string bytes) {
  VCardFile file;
  file.text_ = NormaliseFile(std::move(bytes));
  VCardIndexer(file).Run();
  return file;
}

VCard VCardFile::Parse(size_t index, VCardFields fields) const {
  const Record& record = records_[index];
  const VCardVersion version = record.isVersion21 ? VCardVersion::k21 : VCardVersion::k30OrLater;
  return ParseVCardRecord(TextOf(record), version, fields);
}

std::string_view VCardFile::TextOf(const Record& record) const {
  return std::string_view(text_).substr(record.begin, record.length);
}

std::optional<size_t> VCardFile::FindByUid(std::u16string_view uid) const {
  return FindKey(uids_, StripUuidScheme(ToUtf8(uid)));
}

std::optional<size_t> VCardFile::FindByEmail(std::u16string_view email) const {
  return FindKey(emails_, ToUtf8(email));
}

std::optional<size_t> VCardFile::FindMember(const VCardMember& member) const {
  return member.kind == VCardMember::Kind::kEmail ? FindByEmail(member.value) : FindByUid(member.value);
}

std::string_view VCardFile::TextOf(const Key& key) const {
  return std::string_view(keyText_).substr(key.begin, key.length);
}

std::optional<size_t> VCardFile::FindKey(const std::vector<Key>& keys, std::string_view text) const {
  const std::string folded = FoldAscii(text);
  const auto wanted = std::pair(HashOf(folded), std::string_view(folded));
  const auto isBefore = [this](const Key& key, const auto& sought) {
    return std::pair(key.hash, TextOf(key)) < sought;
  };
  const auto found = std::lower_bound(keys.begin(), keys.end(), wanted, isBefore);
  if (found == keys.end() || TextOf(*found) != folded) return std::nullopt;
  return found->record;
}

}  // namespace formats
