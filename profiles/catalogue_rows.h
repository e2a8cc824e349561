// The pieces that a catalogue is read with: its sections, and a service description made of their lines.
#pragma once

#include "platform/buffer.h"
#include "platform/win.h"
#include "profiles/catalogue.h"
#include "profiles/catalogue_lines.h"
#include "profiles/catalogue_text.h"

namespace orv::catalogue {

// Calls `visit` with each line of a section block, up to its first failure.
template <class Visit>
HRESULT ForEachLine(const WCHAR* lines, Visit visit) {
  for (WStringView line(lines); !line.empty(); line = WStringView(line.data() + line.size() + 1)) {
    if (const HRESULT hr = visit(line); FAILED(hr)) return hr;
  }
  return S_OK;
}

ULONG CountLines(const WCHAR* lines);

// Reads a section through the platform. MAPI_E_TOO_BIG for one of more than CatalogueText::kMostCharacters.
HRESULT ReadBounded(const WString& path, const WString& section, MapiBuffer<WCHAR>& lines);

// The sections of one catalogue, the file being read once; the platform is asked for those of which its text says
// nothing, and so every failure is the platform's to tell.
class Sections {
 public:
  explicit Sections(const WString& path);

  // Good until the next one is read. MAPI_E_TOO_BIG as above.
  HRESULT Read(const WCHAR* section, const WCHAR*& lines);

 private:
  const WString& path_;
  CatalogueText text_;
  MapiBuffer<WCHAR> read_;
};

// Writes into one service description: the root array of ten values, to which everything that they point at is chained.
class Description {
 public:
  // `scratch` saves a catalogue of many services a block a value.
  Description(SPropValue* row, WCHAR letter, WString& scratch)
      : row_(row), letter_(letter), scratch_(scratch) {}

  HRESULT Apply(const KeyLine& line);

 private:
  template <class T>
  HRESULT Chain(std::size_t bytes, T** out) {
    return AllocateChained(bytes, row_, reinterpret_cast<void**>(out));
  }
  HRESULT SetText(Column column, WStringView text);
  HRESULT SetAnsi(Column column, WStringView text);
  HRESULT SetFormatted(Column column, WStringView format);
  HRESULT SetFiles(Column column, WStringView format);

  SPropValue* row_;
  WCHAR letter_;
  WString& scratch_;
};

// The first three columns; `moreColumns` stay behind the ten, without a tag.
HRESULT BuildRow(const ServiceLine& line, SRow& row, ULONG moreColumns = 0);

}  // namespace orv::catalogue
