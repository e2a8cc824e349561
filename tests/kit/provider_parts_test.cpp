// Entry identifiers, recipients, settings and the service entry function.
#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "orv/kit/recipients.hpp"
#include "orv/kit/service.hpp"
#include "orv/orvtags.h"
#include "platform/faults.h"
#include "tests/kit/kit_values.h"

namespace orv::test {
namespace {

using kit::EntryRef;
using kit::PropList;

constexpr MAPIUID kUid{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}};

kit::EntryIdCodec Codec() { return {kUid, {kit::kNoKey, kit::kNumberKey, kit::KeyOfBytes(1, 4)}}; }

TEST(KitEntryIdTest, OnlyWhatTheCodecMadeIsReadBack) {
  const auto codec = Codec();
  const Bytes text{'a', 'b'};
  const Bytes number = codec.Make(EntryRef(1, ULONGLONG{0x0102030405060708}));
  EXPECT_EQ(number, (Bytes{0,  0,  0,  0,  1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12,
                           13, 14, 15, 16, 1, 0, 0, 0, 8, 7, 6, 5, 4, 3,  2,  1}));
  for (const EntryRef& entry : {EntryRef(0), EntryRef(1, ULONGLONG{77}), EntryRef(2, text)}) {
    Bytes shifted = codec.Make(entry);
    shifted.insert(shifted.begin(), 9);  // where no number is aligned
    EntryRef read(9);
    EXPECT_EQ(codec.Read(shifted.size() - 1, shifted.data() + 1, &read), S_OK);
    EXPECT_EQ(read, entry);
  }
  const auto with = [&](size_t at, BYTE byte, size_t size) {
    Bytes id = number;
    id.resize(size);
    if (at < size) id[at] = byte;
    return id;
  };
  const std::pair<Bytes, HRESULT> cases[] = {
      {with(0, 1, 32), MAPI_E_INVALID_ENTRYID},
      {with(4, 0, 32), MAPI_E_INVALID_ENTRYID},
      {with(19, 0, 32), MAPI_E_INVALID_ENTRYID},
      {with(20, 3, 32), MAPI_E_NOT_FOUND},
      {with(23, 1, 32), MAPI_E_NOT_FOUND},
      {with(20, 0, 32), MAPI_E_INVALID_ENTRYID},
      {with(20, 2, 24), MAPI_E_INVALID_ENTRYID},
      {with(20, 2, 25), S_OK},
      {with(20, 2, 28), S_OK},
      {with(20, 2, 29), MAPI_E_INVALID_ENTRYID},
      {with(32, 0, 33), MAPI_E_INVALID_ENTRYID},
      {Bytes(), MAPI_E_INVALID_ENTRYID},
  };
  for (const auto& [id, result] : cases) {
    EntryRef read(9);
    EXPECT_EQ(codec.Read(id.size(), id.data(), &read), result) << &id - &cases[0].first;
    EXPECT_EQ(read == EntryRef(9), FAILED(result));
  }
  for (size_t size = 0; size < number.size(); ++size) {
    EntryRef read;
    EXPECT_EQ(codec.Read(size, number.data(), &read), MAPI_E_INVALID_ENTRYID) << size;
  }
  EntryRef read;
  EXPECT_EQ(codec.Read(32, nullptr, &read), MAPI_E_INVALID_ENTRYID);
}

// A recipient on its own, freed with the list.
struct Recipient {
  explicit Recipient(const std::vector<SPropValue>& values) {
    auto copy = kit::CopyAll(Buffers(), {values.data(), static_cast<ULONG>(values.size())});
    list.aEntries[0] = {0, static_cast<ULONG>(values.size()), copy.Detach()};
  }
  ~Recipient() { OrvFreeBuffer(list.aEntries[0].rgPropVals); }
  std::vector<ULONG> Shown() const { return PropList(sdk::ValueView(list.aEntries[0])).Tags(); }
  ADRLIST list{1, {}};
};

TEST(KitRecipientsTest, AskedPropertiesComeFirstThenWhatElseTheRecipientHas) {
  const auto codec = Codec();
  const Bytes ours = codec.Make(EntryRef(1, ULONGLONG{5})), gone = codec.Make(EntryRef(1, ULONGLONG{6}));
  const Bytes foreign(32);
  const auto id = [](const Bytes& bytes) { return Binary(PR_ENTRYID, bytes.data(), bytes.size()); };
  const SPropValue type = Long(PR_RECIPIENT_TYPE, MAPI_CC), name = Unicode(PR_DISPLAY_NAME, L"given");
  const ULONG missing = CHANGE_PROP_TYPE(PR_COMMENT, PT_ERROR);
  Tags tags{PR_TITLE, PR_COMMENT, PR_DISPLAY_NAME};
  const struct {
    std::vector<SPropValue> given;
    std::vector<ULONG> shown;
  } cases[] = {
      {{id(ours), type, name}, {PR_TITLE, missing, PR_DISPLAY_NAME, PR_ENTRYID, PR_RECIPIENT_TYPE}},
      {{id(ours), Unicode(PR_COMMENT, L"kept")}, {PR_TITLE, PR_COMMENT, PR_DISPLAY_NAME, PR_ENTRYID}},
      {{id(gone), type}, {PR_ENTRYID, PR_RECIPIENT_TYPE}},
      {{id(foreign), type}, {PR_ENTRYID, PR_RECIPIENT_TYPE}},
      {{type}, {PR_RECIPIENT_TYPE}},
      {{id(ours), String8(PR_EMAIL_ADDRESS_A, "narrow")}, {PR_ENTRYID, PR_EMAIL_ADDRESS_A}},
  };
  const auto read = [](const EntryRef& entry, std::span<const ULONG>, PropList* values) -> HRESULT {
    if (entry.Number() != 5) return MAPI_E_NOT_FOUND;
    values->Set(PR_DISPLAY_NAME, L"Ada");
    values->Set(PR_TITLE, L"Dr");
    return S_OK;
  };
  for (const auto& c : cases) {
    Recipient recipient(c.given);
    for (size_t nth = 1; nth != 0;) {  // whole or as it was
      const auto before = recipient.Shown();
      faults::Arm(faults::Site::kTaskAllocation, nth);
      const HRESULT hr = kit::PrepareRecipients(Buffers(), codec, tags.Get(), &recipient.list, read);
      const bool failed = faults::Fired(faults::Site::kTaskAllocation);
      EXPECT_EQ(hr, failed ? MAPI_E_NOT_ENOUGH_MEMORY : S_OK);
      if (failed) {
        EXPECT_EQ(recipient.Shown(), before);
      }
      faults::Arm(faults::Site::kTaskAllocation, 0);
      nth = failed ? nth + 1 : 0;
    }
    EXPECT_EQ(recipient.Shown(), c.shown) << &c - cases;
  }
  ADRLIST empty{}, lying{1, {{0, 5, nullptr}}};
  EXPECT_EQ(kit::PrepareRecipients(Buffers(), codec, tags.Get(), &empty, read), S_OK);
  EXPECT_EQ(kit::PrepareRecipients(Buffers(), codec, tags.Get(), &lying, read), S_OK);
  EXPECT_EQ(kit::PrepareRecipients(Buffers(), codec, nullptr, &lying, read), S_OK);
  EXPECT_EQ(kit::PrepareRecipients(Buffers(), codec, tags.Get(), nullptr, read), MAPI_E_INVALID_PARAMETER);
}

constexpr ULONG kSeconds = PROP_TAG(PT_LONG, 0x6701), kSorted = PROP_TAG(PT_BOOLEAN, 0x6702),
                kServer = PROP_TAG(PT_UNICODE, 0x6703), kBook = PROP_TAG(PT_BINARY, 0x6704);

// A profile section in memory; what reaches it is noted when it is saved.
class StoredSection final : public sdk::RefusingProp<IProfSect, IMAPIProp> {
 public:
  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG, ULONG* count,
                                     LPSPropValue* values) override {
    HRESULT hr = S_OK;
    *count = tags->cValues;
    *values = kit::CopyProps(Buffers(), held.View(), tags->aulPropTag, tags->cValues, &hr).Detach();
    return hr;
  }
  HRESULT STDMETHODCALLTYPE SetProps(ULONG count, LPSPropValue values,
                                     LPSPropProblemArray* problems) override {
    for (ULONG i = 0; i < count; ++i) EXPECT_EQ(held.Set(values[i]), S_OK);
    if (problem != S_OK && problems != nullptr) {
      *problems = Buffers().Make<SPropProblemArray>(sizeof(SPropProblemArray)).Detach();
      **problems = {1, {{0, values->ulPropTag, problem}}};
    }
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override {
    ++saved;
    return S_OK;
  }

  PropList held;
  int saved = 0;
  HRESULT problem = S_OK;
};

kit::Settings MySettings() {
  const auto check = [](const SPropValue& value) {
    const std::wstring_view path = value.Value.lpszW;
    return path.size() > 3 && path[1] == L':' && !path.ends_with(L"bad") ? S_OK : MAPI_E_DISK_ERROR;
  };
  return kit::Settings()
      .Path(PR_ORV_BOOK_FILE_W, check)
      .Text(kServer, L"localhost")
      .Number(kSeconds, 60, 1, 3600)
      .Flag(kSorted, true)
      .Uid(kBook);
}

TEST(KitSettingsTest, ARefusedValueStoresNothing) {
  const auto entry = [](ULONG context, ULONG flags, std::vector<SPropValue> values, IProfSect* section) {
    const kit::ServiceCall call{
        nullptr, 0, flags, context, {values.data(), static_cast<ULONG>(values.size())}, section, nullptr};
    return kit::ServiceHandler(MySettings()).Run(call);
  };
  const SPropValue seconds = Long(kSeconds, 5);
  const struct {
    ULONG context, flags;
    std::vector<SPropValue> values;
    HRESULT result;
    std::vector<ULONG> stored;
  } cases[] = {
      {MSG_SERVICE_CONFIGURE, 0, {seconds, Unicode(kServer, L"s")}, S_OK, {kSeconds, kServer}},
      {MSG_SERVICE_CONFIGURE, 0, {seconds, Long(kSeconds, 0)}, MAPI_E_BAD_VALUE, {}},
      {MSG_SERVICE_CONFIGURE, 0, {seconds, Long(kSeconds, 3601)}, MAPI_E_BAD_VALUE, {}},
      {MSG_SERVICE_CONFIGURE,
       0,
       {seconds, Long(CHANGE_PROP_TYPE(kServer, PT_LONG), 1)},
       MAPI_E_UNEXPECTED_TYPE,
       {}},
      {MSG_SERVICE_CONFIGURE, 0, {seconds, Unicode(kServer, nullptr)}, MAPI_E_INVALID_PARAMETER, {}},
      {MSG_SERVICE_CONFIGURE, 0, {seconds, Unicode(PR_TITLE, L"x")}, MAPI_E_NOT_FOUND, {}},
      {MSG_SERVICE_CONFIGURE, 0, {seconds, Binary(kBook, "short")}, MAPI_E_BAD_VALUE, {}},
      {MSG_SERVICE_CONFIGURE, 0, {seconds, Binary(kBook, nullptr, 16)}, MAPI_E_INVALID_PARAMETER, {}},
      {MSG_SERVICE_CONFIGURE, 0, {seconds, Unicode(PR_ORV_BOOK_FILE_W, L"C:\\bad")}, MAPI_E_DISK_ERROR, {}},
      {MSG_SERVICE_CONFIGURE,
       0,
       {Value(PR_NULL), Unicode(PR_ORV_BOOK_FILE_W, L"")},
       S_OK,
       {PR_ORV_BOOK_FILE_W}},
      {MSG_SERVICE_CONFIGURE, SERVICE_UI_ALLOWED, {}, S_OK, {}},
      {MSG_SERVICE_CONFIGURE, SERVICE_UI_ALWAYS, {}, MAPI_E_USER_CANCEL, {}},
      {ORV_SERVICE_EXTRA_CONFIG, 0, {Unicode(0, L"some\\file")}, S_OK, {PR_ORV_BOOK_FILE_W}},
      {ORV_SERVICE_EXTRA_CONFIG, 0, {Unicode(0, nullptr)}, MAPI_E_INVALID_PARAMETER, {}},
      {ORV_SERVICE_EXTRA_CONFIG, 0, {}, MAPI_E_INVALID_PARAMETER, {}},
      {MSG_SERVICE_INSTALL, 0, {}, S_OK, {}},
      {MSG_SERVICE_CREATE, 0, {}, S_OK, {}},
      {MSG_SERVICE_UNINSTALL, 0, {}, S_OK, {}},
      {MSG_SERVICE_PROVIDER_CREATE, 0, {}, MAPI_E_NO_SUPPORT, {}},
      {99, 0, {}, MAPI_E_NO_SUPPORT, {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    const auto section = sdk::ComPtr<StoredSection>::Adopt(new StoredSection);
    EXPECT_EQ(entry(c.context, c.flags, c.values, section.Get()), c.result);
    EXPECT_EQ(section->held.Tags(), c.stored);
    EXPECT_EQ(section->saved, c.stored.empty() ? 0 : 1);
  }
  EXPECT_EQ(entry(MSG_SERVICE_CONFIGURE, 0, {seconds}, nullptr), MAPI_E_INVALID_PARAMETER);
  // Paths are absolute afterwards; what a section refuses by the way is no success.
  const auto section = sdk::ComPtr<StoredSection>::Adopt(new StoredSection);
  EXPECT_EQ(MySettings().StoreMain(section.Get(), L"some\\file", &OrvFreeBuffer), S_OK);
  EXPECT_EQ(section->held.Text(PR_ORV_BOOK_FILE_W),
            (std::filesystem::current_path() / L"some" / L"file").wstring());
  section->problem = MAPI_E_NO_ACCESS;
  EXPECT_EQ(MySettings().StoreMain(section.Get(), L"file", &OrvFreeBuffer), MAPI_E_NO_ACCESS);
  EXPECT_EQ(section->saved, 1);
}

TEST(KitSettingsTest, WhatIsNotThereOrNotAllowedIsItsDefault) {
  const auto section = sdk::ComPtr<StoredSection>::Adopt(new StoredSection);
  PropList read;
  read.Set(PR_TITLE, L"untouched");
  EXPECT_EQ(MySettings().Read(*section, Buffers(), &read), MAPI_E_INVALID_OBJECT);
  EXPECT_EQ(read.Tags(), std::vector<ULONG>{PR_TITLE});
  section->held.Set(PR_SERVICE_UID, kUid);
  const auto expect = [&](std::wstring_view name, std::wstring_view file, LONG seconds, bool sorted) {
    ASSERT_EQ(MySettings().Read(*section, Buffers(), &read), S_OK);
    EXPECT_EQ(read.Text(PR_DISPLAY_NAME), name);
    EXPECT_EQ(read.Text(PR_ORV_BOOK_FILE_W), file);
    EXPECT_EQ(read.Text(kServer), L"localhost");
    EXPECT_EQ(read.Number(kSeconds), seconds);
    EXPECT_EQ(read.Number(kSorted), sorted);
    EXPECT_EQ(read.Bytes(kBook).cb, 16u);
    EXPECT_EQ(std::memcmp(read.Bytes(PR_SERVICE_UID).lpb, &kUid, sizeof kUid), 0);
  };
  expect(L"", L"", 60, true);
  section->held.Set(PR_DISPLAY_NAME, L"Name");
  section->held.Set(PR_ORV_BOOK_FILE_W, L"gone");
  section->held.Set(kSeconds, 7);
  section->held.Set(kSorted, false);
  section->held.Set(CHANGE_PROP_TYPE(kServer, PT_LONG), 3);
  expect(L"Name", L"gone", 7, false);
  section->held.Set(kSeconds, 0);
  expect(L"Name", L"gone", 60, false);
}

}  // namespace
}  // namespace orv::test
