#include "providers/book/provider/book_health.h"

#include <algorithm>
#include <string>
#include <vector>

#include "orv/kit/boundary.hpp"
#include "providers/book/database.h"
#include "providers/book/file.h"
#include "providers/book/text.h"

namespace book {
namespace {

constexpr size_t kWindow = 256;

// Of what is a book, as far as its header can be read.
void TellFacts(const std::wstring& path, OrvBookHealth* health) {
  static_cast<void>(Answer([&] {
    const FileFacts facts = ExamineFile(path);
    health->ulFormat = facts.format;
    health->fReadOnly = !facts.isWritable;
  }));
}

void TellFile(const std::wstring& path, OrvBookHealth* health) {
  WIN32_FILE_ATTRIBUTE_DATA file{};
  if (!GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &file)) return;
  health->cbFile = ULONGLONG{file.nFileSizeHigh} << 32 | file.nFileSizeLow;
  health->ftChanged = file.ftLastWriteTime;
  health->fReadOnly = (file.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
  TellFacts(path, health);
}

void Tell(std::wstring_view text, OrvBookHealth* health) {
  const size_t size = std::min(text.size(), std::size(health->szText) - 1);
  std::copy_n(text.begin(), size, health->szText);
  health->szText[size] = 0;
}

void Begin(OrvBookHealth* health) {
  *health = {};
  health->cbSize = sizeof *health;
}

// A contact has a row for each number, and they lie together.
HRESULT CountEntries(View& view, OrvBookHealth* health) {
  uint64_t count = 0;
  std::vector<RowRef> refs, plain;
  if (const HRESULT hr = view.Count(&count); FAILED(hr)) return hr;
  if (const HRESULT hr = view.Refs(0, static_cast<size_t>(count), &refs); FAILED(hr)) return hr;
  for (size_t i = 0; i < refs.size(); ++i) {
    health->cEntries += i == 0 || refs[i].entry != refs[i - 1].entry;
    if (refs[i].ordinal == kNoNumber) plain.push_back(refs[i]);
  }
  for (size_t first = 0; first < plain.size(); first += kWindow) {
    std::vector<Row> rows;
    const auto part = std::span(plain).subspan(first, std::min(kWindow, plain.size() - first));
    if (const HRESULT hr = view.Rows(part, &rows); FAILED(hr)) return hr;
    for (const Row& each : rows) health->cLists += each.isList;
  }
  return S_OK;
}

HRESULT CountAll(Store& store, OrvBookHealth* health) {
  std::unique_ptr<View> view;
  std::vector<DeletedEntry> deleted;
  if (const HRESULT hr = store.OpenView(&view); FAILED(hr)) return hr;
  if (const HRESULT hr = CountEntries(*view, health); FAILED(hr)) return hr;
  const HRESULT hr = store.Deleted(&deleted);
  health->cDeleted = deleted.size();
  return hr;
}

// Each as a rejected record: its number in the place of the line.
HRESULT TellFindings(const std::vector<Finding>& findings, IOrvContactReport* report) {
  if (report == nullptr) return S_OK;
  for (const Finding& each : findings) {
    const std::wstring name = ToWide(each.name), reason = ToWide(each.text + " " + each.advice);
    const HRESULT hr = orv::kit::CallForeign([&] {
      return report->Record(ORV_RECORD_REJECTED, static_cast<ULONGLONG>(each.entry), name.c_str(),
                            reason.c_str());
    });
    if (FAILED(hr)) return hr;
  }
  return S_OK;
}

}  // namespace

HRESULT CheckWhole(const std::wstring& path, OrvBookHealth* health, IOrvContactReport* report,
                   std::vector<Finding>* findings) {
  Health found;
  const HRESULT hr = Check(path, &found);
  Begin(health);
  health->hrStatus = FAILED(hr) ? hr : found.code;
  TellFile(path, health);
  health->cEntries = found.contacts + found.lists;
  health->cLists = found.lists;
  health->cDeleted = found.deleted;
  health->cDamaged = found.damaged;
  std::string text = SUCCEEDED(health->hrStatus) ? "" : Sentence(health->hrStatus);
  for (const Finding& each : found.findings) text += (text.empty() ? "" : " ") + each.text;
  Tell(ToWide(text), health);
  const HRESULT told = TellFindings(found.findings, report);
  if (findings != nullptr) *findings = std::move(found.findings);
  return told;
}

HRESULT TellFigures(BookFile& file, OrvBookHealth* health) {
  std::shared_ptr<Store> store;
  Begin(health);
  HRESULT hr = file.Open(&store);
  if (SUCCEEDED(hr)) hr = CountAll(*store, health);
  health->hrStatus = FAILED(hr) ? hr : S_OK;
  TellFile(file.Path(), health);
  if (FAILED(hr)) Tell(ToWide(BookFile::Sentence(hr)), health);
  return S_OK;
}

HRESULT RepairInto(const std::wstring& path, const std::wstring& newPath, IOrvContactReport* report,
                   Salvage* salvage) {
  if (GetFileAttributesW(newPath.c_str()) != INVALID_FILE_ATTRIBUTES) return MAPI_E_COLLISION;
  if (const HRESULT hr = Repair(path, newPath, salvage); FAILED(hr)) return hr;
  return TellFindings(salvage->findings, report);
}

}  // namespace book
