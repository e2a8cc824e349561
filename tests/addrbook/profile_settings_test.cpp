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
    EXPECT_EQ(S_OK, NodeFromValue(value, node));
    const auto bytes = CellOf(*node);
    return {REG_BINARY, {bytes.begin(), bytes.end()}};
  }
  static WString Name(ULONG tag) { return std::to_wstring(tag); }

  Installation installation;
  RedirectedRegistry registry;
};

TEST_F(ProfileSettings, ChosenSettingsComeBackAndOthersAreNotWritten) {
  FakeScript& a = Load("A", {{"mine", AB_MODIFIABLE | AB_RECIPIENTS, 0}, {"other", AB_RECIPIENTS, 0}});
  ASSERT_EQ(S_OK, OpenOn(L"Office"));
  Bytes mine = a.EntryId("mine");
  ASSERT_EQ(S_OK, book->SetPAB(Size(mine), Id(mine)));
  ULONG size = 0;
  MapiBuffer<ENTRYID> found;
  EXPECT_EQ(S_OK, book->GetDefaultDir(&size, found.Put()));
  NextSession();
  EXPECT_EQ(std::vector<WString>{Name(PR_AB_DEFAULT_PAB)}, ValueNames(kProfile))
      << "a fallback is not stored";
  SPropValue expected = {};
  expected.ulPropTag = PR_AB_DEFAULT_PAB;
  expected.Value.bin = Binary(mine);
  const RegValue stored = ReadRegValue(kProfile, Name(PR_AB_DEFAULT_PAB));
  // Bytes 20 to 31 are padding and a pointer of the process that wrote them.
  RegValue wanted = Cell(expected);
  ASSERT_EQ(wanted.data.size(), stored.data.size());
  std::copy_n(stored.data.begin() + 20, 12, wanted.data.begin() + 20);
  EXPECT_EQ(wanted, stored);

  LoadObject(MakeFakeProvider(&a, kOwnBuffers), 'A');
  ASSERT_EQ(S_OK, OpenOn(L"Office"));
  EXPECT_EQ(S_OK, book->GetPAB(&size, found.Put()));
  EXPECT_EQ(mine, Bytes(reinterpret_cast<BYTE*>(found.Get()), reinterpret_cast<BYTE*>(found.Get()) + size));
  const auto before = DumpKey(kProfile);
  NextSession();
  EXPECT_EQ(before, DumpKey(kProfile)) << "what was only loaded is not written";
}

TEST_F(ProfileSettings, DamagedValuesAreNoSettingsAndStay) {
  FakeScript& a = Load("A", {{"mine", AB_MODIFIABLE | AB_RECIPIENTS, 0}});
  const std::byte torn[] = {std::byte{40}, std::byte{0}};
  WriteRegValue(kProfile, Name(PR_AB_DEFAULT_DIR), REG_BINARY, torn);
  SPropValue number = {};
  number.ulPropTag = CHANGE_PROP_TYPE(PR_AB_SEARCH_PATH, PT_LONG);
  WriteRegValue(kProfile, Name(number.ulPropTag), REG_BINARY, Cell(number).data);
  const auto before = DumpKey(kProfile);
  ASSERT_EQ(S_OK, OpenOn(L"Office"));
  ULONG size = 0;
  MapiBuffer<ENTRYID> found;
  EXPECT_EQ(S_OK, book->GetDefaultDir(&size, found.Put()));
  RowSetPtr path;
  EXPECT_EQ(S_OK, book->GetSearchPath(0, path.Put()));
  EXPECT_EQ(std::vector<Bytes>{a.EntryId("mine")}, PathOf(path.Get()));
  EndSession();
  EXPECT_EQ(before, DumpKey(kProfile));
}

}  // namespace
}  // namespace orv::test
