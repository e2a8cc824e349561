#include "tools/orvctl/transfer_report.h"

#include <sstream>

namespace orvctl {
namespace {

constexpr size_t kMostTold = 10;

// A field of a table with commas.
std::string Field(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char each : text) quoted.append(each == '"' ? 2 : 1, each);
  return quoted + "\"";
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::string Told(LPCWSTR text) { return text != nullptr ? ToUtf8(text) : std::string(); }

}  // namespace

Rejections::Rejections(const std::string& file) {
  if (file.empty()) return;
  file_ = std::make_unique<TargetFile>(file);
  if (!file_->sink().Write("file,line,name,reason\r\n")) file_->Fail();
}

void Rejections::Add(const std::string& source, ULONGLONG line, const std::string& name,
                     const std::string& reason) {
  ++count_;
  const std::string place = std::to_string(line);
  Write(source, place, name, reason);
  if (told_.size() == kMostTold) return;
  const std::string whose = name.empty() ? "" : " ('" + name + "')";
  const bool isRecord = line != 0 || !name.empty();
  told_.push_back({source + (line == 0 ? "" : ", line " + place) + whose + ": " + reason +
                   (isRecord ? "; it is left out" : "")});
}

void Rejections::AddShared(const std::string& source, ULONGLONG line, const std::string& name,
                           const std::string& reason) {
  const std::string place = std::to_string(line);
  Write(source, place, name, reason);
  if (shared_++ == 0) firstShared_ = source + ", line " + place + " ('" + name + "')";
}

void Rejections::Write(const std::string& source, const std::string& place, const std::string& name,
                       const std::string& reason) {
  if (!file_) return;
  const std::string row = Field(source) + "," + place + "," + Field(name) + "," + Field(reason) + "\r\n";
  if (!file_->sink().Write(row)) file_->Fail();
}

void Rejections::Commit() {
  if (file_) file_->Commit();
}

std::vector<Message> Rejections::Messages() const {
  std::vector<Message> messages = told_;
  if (count_ > told_.size())
    messages.push_back({std::to_string(count_ - told_.size()) + " further records are left out" +
                        (file_ ? "; the report names all of them" : "; --report FILE names all of them")});
  if (shared_ != 0)
    messages.push_back({Counted(shared_, "record") + (shared_ == 1 ? " has" : " have") +
                        " the UID of an earlier record with another name, the first one " + firstShared_ +
                        "; records of one UID are one contact: give a UID of its own to whoever is another"});
  return messages;
}

void Losses::Add(const std::vector<std::string>& names) {
  ++contacts_;
  for (const std::string& each : names) fields_[each] = fields_.value(each, 0) + 1;
}

std::vector<Message> Losses::Messages(const std::string& format) const {
  if (contacts_ == 0) return {};
  std::string names;
  size_t told = 0;
  for (const auto& [name, count] : fields_.items()) {
    if (told++ == kMostTold) break;
    names.append(names.empty() ? "" : ", ").append(name);
  }
  if (fields_.size() > kMostTold) names += " and " + std::to_string(fields_.size() - kMostTold) + " more";
  return {{Counted(contacts_, "contact") + (contacts_ == 1 ? " has" : " have") + " fields that " + format +
           " does not hold (" + names + "); vCard keeps everything"}};
}

Message TellOfStrict(ULONGLONG rejected) {
  return {
      Counted(rejected, "record") + (rejected == 1 ? " was rejected" : " were rejected"), {}, kSomeFailed};
}

HRESULT TransferReport::Record(ULONG outcome, ULONGLONG line, LPCWSTR name, LPCWSTR reason) {
  return orv::sdk::Guarded([&] {
    if (outcome == ORV_RECORD_REJECTED) rejections_.Add(source_, line, Told(name), Told(reason));
    const bool isKnown = outcome == ORV_RECORD_UPDATED || outcome == ORV_RECORD_EQUAL;
    if (isKnown && !Told(reason).empty()) rejections_.AddShared(source_, line, Told(name), Told(reason));
    if (outcome == ORV_RECORD_REDUCED) losses_.Add(LinesOf(Told(reason)));
    return Interruption::IsWanted() ? MAPI_E_USER_CANCEL : S_OK;
  });
}

HRESULT TransferReport::Progress(ULONGLONG bytes, ULONGLONG records) {
  return orv::sdk::Guarded([&] {
    bar_.Show(bytes, records);
    return Interruption::IsWanted() ? MAPI_E_USER_CANCEL : S_OK;
  });
}

}  // namespace orvctl
