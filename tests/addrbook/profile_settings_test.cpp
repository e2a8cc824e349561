// The address book over the real registry: what a session's end leaves in the profile's key.
#include "props/prop_record.h"
#include "tests/addrbook/book_fixture.h"
#include "tests/support/installation.h"
#include "tests/support/redirected_registry.h"

namespace orv::test {
namespace {

const WString kProfile = L"Software\\Tovan\\Velmora\\VX100 series\\Orv Profiles\\Office";

class ProfileSettings : public BookTest {
 protected:
  HRESULT OpenOn(const WString& name) {
    return CAddrBook::Create(MakeProfileSettings(name), list.Get(), book.Put());
  }
  void NextSession() {
    EndSession();
    list = CABServiceList::Create();
  }

  // The stored bytes that a value must have.
  static RegValue Cell(const SPropValue& value) {
    PropNodePtr node;
    EXPECT_EQ(NodeFromValue(value, node), S_OK);
    const auto bytes = CellOf(*node);
    return {REG_BINARY, {bytes.begin(), bytes.end()}};
  }
  static WString Name(ULONG tag) { return std::to_wstring(tag); }

  Installation installation;
  RedirectedRegistry registry;
};

TEST_F(ProfileSettings, ChosenSettingsComeBackAndOthersAreNotWritten) {
  FakeScript& a = Load("A", {{"mine", AB_MODIFIABLE | AB_RECIPIENTS, 0}, {"other", AB_RECIPIENTS, 0}});
  ASSERT_EQ(OpenOn(L"Office"), S_OK);
  Bytes mine = a.EntryId("mine");
  ASSERT_EQ(book->SetPAB(Size(mine), Id(mine)), S_OK);
  ULONG size = 0;
  MapiBuffer<ENTRYID> found;
  EXPECT_EQ(book->GetDefaultDir(&size, found.Put()), S_OK);
  NextSession();
  EXPECT_EQ(ValueNames(kProfile), std::vector<WString>{Name(PR_AB_DEFAULT_PAB)})
      << "a fallback is not stored";
  const SPropValue expected = Binary(PR_AB_DEFAULT_PAB, mine.data(), mine.size());
  const RegValue stored = ReadRegValue(kProfile, Name(PR_AB_DEFAULT_PAB));
  // Bytes 20 to 31 are padding and a pointer of the process that wrote them.
  RegValue wanted = Cell(expected);
  ASSERT_EQ(stored.data.size(), wanted.data.size());
  std::copy_n(stored.data.begin() + 20, 12, wanted.data.begin() + 20);
  EXPECT_EQ(stored, wanted);

  LoadObject(MakeFakeProvider(&a, kOwnBuffers), 'A');
  ASSERT_EQ(OpenOn(L"Office"), S_OK);
  EXPECT_EQ(book->GetPAB(&size, found.Put()), S_OK);
  EXPECT_EQ(Bytes(reinterpret_cast<BYTE*>(found.Get()), reinterpret_cast<BYTE*>(found.Get()) + size), mine);
  const auto before = DumpKey(kProfile);
  NextSession();
  EXPECT_EQ(DumpKey(kProfile), before) << "what was only loaded is not written";
}

TEST_F(ProfileSettings, DamagedValuesAreNoSettingsAndStay) {
  FakeScript& a = Load("A", {{"mine", AB_MODIFIABLE | AB_RECIPIENTS, 0}});
  const std::byte torn[] = {std::byte{40}, std::byte{0}};
  WriteRegValue(kProfile, Name(PR_AB_DEFAULT_DIR), REG_BINARY, torn);
  const SPropValue number = Long(CHANGE_PROP_TYPE(PR_AB_SEARCH_PATH, PT_LONG), 0);
  WriteRegValue(kProfile, Name(number.ulPropTag), REG_BINARY, Cell(number).data);
  const auto before = DumpKey(kProfile);
  ASSERT_EQ(OpenOn(L"Office"), S_OK);
  ULONG size = 0;
  MapiBuffer<ENTRYID> found;
  EXPECT_EQ(book->GetDefaultDir(&size, found.Put()), S_OK);
  RowSetPtr path;
  EXPECT_EQ(book->GetSearchPath(0, path.Put()), S_OK);
  EXPECT_EQ(PathOf(path.Get()), std::vector<Bytes>{a.EntryId("mine")});
  EndSession();
  EXPECT_EQ(DumpKey(kProfile), before);
}

}  // namespace
}  // namespace orv::test
