#include "tools/orvctl/entry_columns.h"

#include <algorithm>
#include <iterator>

#include "diag/names.h"
#include "tools/orvctl/errors.h"
#include "tools/orvctl/known_fields.h"

namespace orvctl {
namespace {

struct KnownField {
  const char* key;
  const char* title;
  ULONG tag;
  bool isUsual;
};

constexpr KnownField kKnown[] = {
    {"name", "Name", PR_DISPLAY_NAME_W, true},
    {"type", "Type", PR_OBJECT_TYPE, true},
    {"addressType", "Address type", PR_ADDRTYPE_W, true},
    {"address", "Address", PR_EMAIL_ADDRESS_W, true},
    {"container", "Container", PR_NULL, true},
    {"id", "", PR_ENTRYID, true},
    {"plainName", "Plain name", PR_TRANSMITABLE_DISPLAY_NAME_W, false},
    {"company", "Company", PR_COMPANY_NAME_W, false},
    {"department", "Department", PR_DEPARTMENT_NAME_W, false},
    {"title", "Title", PR_TITLE_W, false},
    {"email", "E-mail", PR_SMTP_ADDRESS_W, false},
    {"given", "Given name", PR_GIVEN_NAME_W, false},
    {"surname", "Surname", PR_SURNAME_W, false},
    {"note", "Remark", PR_COMMENT_W, false},
    {"businessFax", "Business fax", PR_BUSINESS_FAX_NUMBER_W, false},
    {"homeFax", "Home fax", PR_HOME_FAX_NUMBER_W, false},
    {"otherFax", "Other fax", PR_PRIMARY_FAX_NUMBER_W, false},
    {"businessPhone", "Business telephone", PR_BUSINESS_TELEPHONE_NUMBER_W, false},
    {"homePhone", "Home telephone", PR_HOME_TELEPHONE_NUMBER_W, false},
    {"mobile", "Mobile telephone", PR_MOBILE_TELEPHONE_NUMBER_W, false}};

std::vector<std::string> KnownNames() {
  std::vector<std::string> names;
  for (const KnownField& each : kKnown) names.emplace_back(each.key);
  return names;
}

// A property of the field's name, or a tag; texts are meant unless a tag says otherwise.
ULONG TagByName(const std::string& field) {
  if (field.substr(0, 2) == "0x") return static_cast<ULONG>(std::strtoul(field.c_str(), nullptr, 16));
  const bool hasEnd = field.size() > 2 && field.substr(field.size() - 2) == "_W";
  const ULONG id = diag::FindPropId(hasEnd ? field.substr(0, field.size() - 2) : field);
  return id != 0 ? PROP_TAG(PT_UNICODE, id) : PR_NULL;
}

EntryField FieldOf(const std::string& name) {
  const auto known = std::find_if(std::begin(kKnown), std::end(kKnown),
                                  [&](const KnownField& each) { return name == each.key; });
  if (known != std::end(kKnown)) return {known->key, *known->title ? known->title : known->key, known->tag};
  const ULONG tag = TagByName(name);
  if (tag == PR_NULL)
    throw CommandError(kUsage, DescribeUnknownField(name, KnownNames()) +
                                   ", names of properties and tags such as 0x3A16001F");
  return {name, name, tag};
}

Cell CellOf(const ValueView& row, ULONG tag) {
  if (tag == PR_OBJECT_TYPE) return ObjectTypeName(row.Number(PR_OBJECT_TYPE));
  if (tag == PR_ENTRYID) return ToHex(BytesOf(row, PR_ENTRYID));
  if (PROP_TYPE(tag) == PT_UNICODE) return TextOf(row, tag);
  const SPropValue* const value = row.Find(tag);
  return value != nullptr ? ValueCell(*value) : Cell("", nullptr);
}

}  // namespace

EntryColumns::EntryColumns(const std::vector<std::string>& fields) : tags_{0} {
  for (const KnownField& each : kKnown) {
    if (each.isUsual) fields_.push_back({each.key, each.title, each.tag});
  }
  for (const std::string& name : fields) {
    const bool isThere =
        std::any_of(fields_.begin(), fields_.end(), [&](const EntryField& each) { return each.key == name; });
    if (!isThere) fields_.push_back(FieldOf(name));
  }
  for (const EntryField& field : fields_) {
    const bool isNew = std::find(tags_.begin() + 1, tags_.end(), field.tag) == tags_.end();
    if (field.tag != PR_NULL && isNew) tags_.push_back(field.tag);
  }
  tags_.front() = static_cast<ULONG>(tags_.size() - 1);
}

std::vector<Column> EntryColumns::columns() const {
  std::vector<Column> columns;
  for (const EntryField& field : fields_) columns.push_back({field.key, field.title});
  return columns;
}

std::vector<Cell> EntryColumns::Cells(const ValueView& row, const std::string& container) const {
  std::vector<Cell> cells;
  for (const EntryField& field : fields_)
    cells.push_back(field.tag == PR_NULL ? Cell(container) : CellOf(row, field.tag));
  return cells;
}

ULONG EntryColumns::TagOf(const std::string& field) {
  const ULONG tag = FieldOf(field).tag;
  if (PROP_TYPE(tag) != PT_UNICODE) throw CommandError(kUsage, "entries cannot be sorted by '" + field + "'");
  return tag;
}

}  // namespace orvctl
