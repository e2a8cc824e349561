#include "formats/losing_writer.h"

#include <algorithm>

#include "formats/card_params.h"
#include "formats/contact_csv.h"

namespace formats {

void LosingWriter::BeginLosses(const Contact& contact) {
  lost_.clear();
  FirstOfPlace isFirst;
  for (const ContactAddress& each : contact.addresses) {
    if (!isFirst(each)) Lose("ADR");
  }
  for (const ContactMember& each : contact.members) {
    if (!each.entryId.empty()) Lose("MEMBER");
  }
}

// A column that nobody knew is known by the name that its table gave it.
void LosingWriter::LoseLine(std::string_view line) {
  const auto parts = SplitVCardLine(line);
  if (!parts) return Lose(line);
  if (parts->name != kCsvColumnLine) return Lose(parts->name);
  Lose(ReadCardParams(parts->params, LineUse::kMember).memberName);
}

void LosingWriter::Lose(std::string_view name) {
  if (std::find(lost_.begin(), lost_.end(), name) == lost_.end()) lost_.emplace_back(name);
}

}  // namespace formats
