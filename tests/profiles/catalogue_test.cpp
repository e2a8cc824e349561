// The catalogue as a file: what is read out of it, what refuses the whole of it, and the edits.
#include "profiles/catalogue.h"

#include <gtest/gtest.h>

#include "orv/orvtags.h"
#include "platform/private_profile.h"
#include "profiles/catalogue_text.h"
#include "tests/props/samples.h"
#include "tests/support/installation.h"

namespace orv::test {
namespace {

using namespace catalogue;

class CatalogueTest : public testing::Test {
 protected:
  HRESULT Load(const WCHAR* section = kServices) { return catalogue::Load({}, section, rows_); }
  const SPropValue& Value(Column column, ULONG row = 0) { return rows_->aRow[row].lpProps[column]; }

  Installation installation_;
  RowSetPtr rows_;
};

constexpr const char* kOneService =
    "[Services]\r\nAbcde = A book  \r\n"
    "[Abcde]\r\nPR_DISPLAY_NAME=Old\r\nPR_DISPLAY_NAME = The book\r\nPR_SERVICE_DLL_NAME=xht%c%c.dll\r\n"
    "PR_SERVICE_ENTRY_NAME=Entry\r\nPR_SERVICE_SUPPORT_FILES=x%c.dll, y.dll,\r\n"
    "PR_SERVICE_DELETE_FILES=z.dll\r\nPR_RESOURCE_FLAGS=2|UNKNOWN | SERVICE_SINGLE_COPY |\r\n"
    "PR_RESOURCE_FLAGS=\r\nUNKNOWN=1\r\npr_service_dll_name=no.dll\r\n";

TEST_F(CatalogueTest, ARowHasTenColumnsInOrder) {
  installation_.WriteCatalogue(kOneService);
  ASSERT_EQ(Load(), S_OK);
  ASSERT_EQ(rows_->cRows, 1u);
  ASSERT_EQ(rows_->aRow[0].cValues, static_cast<ULONG>(kColumnCount));
  const ULONG tags[] = {0x0FF60102, 0x3D09001F, 0x3006001F, 0x3001001F, 0x3D0A001F,
                        0x3D0B001E, 0x3D0F101F, 0x3D10101F, 0x3D0C0102, 0x30090003};
  for (ULONG i = 0; i < kColumnCount; ++i) EXPECT_EQ(rows_->aRow[0].lpProps[i].ulPropTag, tags[i]);

  EXPECT_EQ(Value(kInstanceKey).Value.bin.cb, 11u);
  EXPECT_EQ(std::memcmp(Value(kInstanceKey).Value.bin.lpb, L"Abcde", 11), 0);
  EXPECT_STREQ(Value(kServiceName).Value.lpszW, L"Abcde");
  EXPECT_STREQ(Value(kDisplayName).Value.lpszW, L"The book");
  EXPECT_STREQ(Value(kDllName).Value.lpszW, L"xhtAA.dll");
  EXPECT_STREQ(Value(kEntryName).Value.lpszA, "Entry");
  const auto& support = Value(kSupportFiles).Value.MVszW;
  ASSERT_EQ(support.cValues, 3u);
  EXPECT_STREQ(support.lppszW[0], L"xA.dll");
  EXPECT_STREQ(support.lppszW[1], L" y.dll");
  EXPECT_STREQ(support.lppszW[2], L"");
  EXPECT_EQ(FilesToDelete(rows_->aRow[0]), std::vector<WString>{L"z.dll"});
  EXPECT_EQ(Value(kServiceUid).Value.bin.cb, 0u);
  EXPECT_EQ(Value(kResourceFlags).Value.l, 2);
}

TEST_F(CatalogueTest, OneBadServiceRefusesTheCatalogue) {
  const struct {
    const char* text;
    HRESULT result;
  } cases[] = {
      {"[Other]\r\nA=B\r\n", MAPI_E_INVALID_PARAMETER},
      {"[Services]\r\n[A]\r\nx=1\r\n", MAPI_E_INVALID_PARAMETER},
      {"[Services]\r\nA=a\r\nB=\r\n[A]\r\nx=1\r\n", MAPI_E_BAD_VALUE},
      {"[Services]\r\nA=a\r\nB=b\r\nA=c\r\n[A]\r\nx=1\r\n[B]\r\nx=1\r\n", MAPI_E_COLLISION},
      {"[Services]\r\nA=a\r\nB=b\r\n[A]\r\nx=1\r\n", MAPI_E_INVALID_PARAMETER},
      {"[Services]\r\nA=a\r\nB=b\r\n[A]\r\nx=1\r\n[B]\r\n", MAPI_E_INVALID_PARAMETER},
      {"[Services]\r\nA=a\r\n[A]\r\nPR_SERVICE_DLL_NAME=abcdefghijkl.dll\r\n", MAPI_E_BAD_VALUE},
      {"[Services]\r\nA=a\r\n[A]\r\nPR_SERVICE_DELETE_FILES=100%\r\n", MAPI_E_BAD_VALUE},
  };
  for (const auto& c : cases) {
    installation_.WriteCatalogue(c.text);
    EXPECT_EQ(Load(), c.result) << c.text;
    EXPECT_FALSE(rows_);
  }
}

TEST_F(CatalogueTest, AMissingFileIsToldFromAMissingSection) {
  EXPECT_EQ(Load(), MAPI_E_CALL_FAILED);
  installation_.WriteCatalogue(kOneService);
  ULONG count = 77;
  EXPECT_EQ(CountServices({}, kDefaultServices, count), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(count, 77u);
  EXPECT_EQ(CountServices({}, kServices, count), S_OK);
  EXPECT_EQ(count, 1u);
}

std::vector<WString> LinesOf(const WCHAR* lines) {
  std::vector<WString> found;
  for (; lines != nullptr && *lines != 0; lines += found.back().size() + 1) found.emplace_back(lines);
  return found;
}

// What the text says of a section is what the platform says of it. Where the platform alone is to be asked the text says
// nothing, and the section is read all the same.
TEST_F(CatalogueTest, TheTextSaysWhatThePlatformSays) {
  using namespace std::string_view_literals;
  const struct {
    bool says;
    std::string_view text;
  } cases[] = {
      {true, "[A]\r\nk=v\r\n"},
      {true, "[a]\nk=v"},
      {true, "top=1\r\n\r\n[B]\r\nk=b\r\n[A]\r\n \tk \t=\t v w;x\r\n;c\r\n\r\nk=again\r\nempty=\r\n[C]\r\n"},
      {true, "[A]\r\nk=first\r\n[a]\r\nk=second\r\n"},
      {true, "[A]\r\nk=\xE4\xDF=[b]\r\n"},
      {true, "\xFF\xFE[\0A\0]\0\n\0k\0=\0\x04\x20\n\0"sv},
      {false, "[A]\r\nk=v\r\n[\xC4]\r\nk=1\r\n"},
      {false, "[A]\r\nk=v \r\n"},
      {false, "[A]\r\nk=\"v\"\r\n"},
      {false, "[A]\r\nword\r\nk=v\r\n"},
      {false, "[A]\r\n=v\r\n"},
      {false, "[A]\r\n#k=v\r\n"},
      {false, "[A]\r\nk=v\r\n\x1A"},
      {false, "[A]\r\nk=v\rj=w\r\n"},
      {false, " [A]\r\nk=v\r\n"},
      {false, "[A] x\r\nk=v\r\n"},
      {false, "[A]\r\nk=v\r\n[B\r\n"},
      {false, "\xEF\xBB\xBF[A]\r\nk=v\r\n"},
  };
  for (const auto& c : cases) {
    installation_.WriteTextFile(L"tricky.ini", c.text);
    const WString path = installation_.Path(L"tricky.ini");
    const CatalogueText text(ReadProfileText(path));
    MapiBuffer<WCHAR> expected;
    const HRESULT hr = ReadSection(path, L"A", expected);
    EXPECT_EQ(text.Section(L"A") != nullptr, c.says) << c.text;
    if (text.Section(L"A") == nullptr) continue;
    EXPECT_EQ(hr, S_OK) << c.text;
    EXPECT_EQ(LinesOf(text.Section(L"A")), LinesOf(expected.Get())) << c.text;
  }
  // A service that is described in a way of the platform's own, beside plain ones.
  installation_.WriteCatalogue(
      "[Services]\r\nA=a\r\nB=b\r\n[A]\r\nPR_DISPLAY_NAME = \"x\"\r\n[B]\r\nPR_DISPLAY_NAME=y\r\n");
  ASSERT_EQ(Load(), S_OK);
  EXPECT_STREQ(Value(kDisplayName).Value.lpszW, L"\"x\"");
  EXPECT_STREQ(Value(kDisplayName, 1).Value.lpszW, L"y");
}

TEST_F(CatalogueTest, SectionsOfAnyLengthAreReadWhole) {
  // Round the sizes at which the platform's buffer is full or grows a second time; what is quoted is read from it.
  for (const unsigned length :
       {2040, 2041, 2042, 2043, 2044, 2045, 2046, 2047, 2048, 4092, 4093, 4094, 4095}) {
    const std::string text = '"' + std::string(length - 3, 'x');
    installation_.WriteCatalogue("[Services]\r\nA=" + text + "\r\n[A]\r\nx=1\r\n");
    ASSERT_EQ(Load(), S_OK) << length;
    EXPECT_EQ(lstrlenW(Value(kProviderDisplay).Value.lpszW), static_cast<int>(length - 2));
  }
}

TEST(CatalogueModels, TheLetterFollowsFromTheExactSpellingInValuesOnly) {
  const char* plain = "[Services]\r\nA=a\r\n[A]\r\nPR_SERVICE_DLL_NAME=a.dll\r\n";
  const char* lettered = "[Services]\r\nA=a\r\n[A]\r\nPR_SERVICE_DLL_NAME=a%c.dll\r\n";
  RowSetPtr rows;
  {
    const Installation installation(L"XHTABB.DLL");
    EXPECT_EQ(DefaultPath(), installation.Path(L"XHTASVB.ini"));
    installation.WriteTextFile(L"XHTASVB.ini", plain);
    EXPECT_EQ(Load({}, kServices, rows), S_OK);
    installation.WriteTextFile(L"XHTASVB.ini", lettered);
    EXPECT_EQ(Load({}, kServices, rows), MAPI_E_BAD_VALUE);
  }
  const Installation installation(L"other.dll");
  installation.WriteTextFile(L"chosen.ini", plain);
  EXPECT_TRUE(DefaultPath().empty());
  EXPECT_EQ(Load({}, kServices, rows), MAPI_E_CALL_FAILED);
  EXPECT_EQ(Load(installation.Path(L"chosen.ini"), kServices, rows), S_OK);
}

TEST_F(CatalogueTest, InstallCopiesAServiceAndRemoveTakesItOut) {
  const WString source = installation_.Path(L"source.ini");
  const WString own = DefaultPath();
  installation_.WriteTextFile(L"source.ini",
                              "[Services]\r\nA=Book a\r\nB=b\r\nC=c\r\n[Default Services]\r\nA=Default a\r\n"
                              "[A]\r\nPR_DISPLAY_NAME=Name\r\nOTHER=kept too\r\n[B]\r\nx=1\r\n");
  installation_.WriteCatalogue("[Services]\r\nC=own\r\n[C]\r\nx=1\r\n[A]\r\nOLD=1\r\n");
  SPropValue a = Unicode(PR_SERVICE_NAME_W, L"A");
  const auto install = [&](const WCHAR* service) {
    SPropValue name = Unicode(PR_SERVICE_NAME_W, service);
    return InstallService(source, {}, {0, 1, &name});
  };
  EXPECT_EQ(install(L"A"), S_OK);
  EXPECT_EQ(ReadProfileValue(own, kServices, L"A", 100), L"Book a");
  EXPECT_EQ(ReadProfileValue(own, kDefaultServices, L"A", 100), L"Default a");
  EXPECT_EQ(ReadProfileValue(own, L"A", L"OTHER", 100), L"kept too");
  EXPECT_EQ(ReadProfileValue(own, L"A", L"OLD", 100), L"");

  EXPECT_EQ(install(L"B"), S_OK);
  EXPECT_EQ(ReadProfileValue(own, kDefaultServices, L"B", 100), L"");

  // Not listed: nothing happens. Listed without a section: the target loses the service.
  EXPECT_EQ(install(L"unknown"), S_OK);
  EXPECT_EQ(ReadProfileValue(own, kServices, L"unknown", 100), L"");
  EXPECT_EQ(install(L"C"), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(ReadProfileValue(own, kServices, L"C", 100), L"");
  EXPECT_EQ(ReadProfileValue(own, L"C", L"x", 100), L"");

  RemoveService({}, {0, 1, &a});
  ULONG count = 0;
  EXPECT_EQ(CountServices({}, kServices, count), S_OK);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(CountServices({}, kDefaultServices, count), MAPI_E_INVALID_PARAMETER);
  EXPECT_EQ(CountServices({}, L"A", count), MAPI_E_INVALID_PARAMETER);
}

TEST_F(CatalogueTest, TheDeliveredCatalogueOffersTheSampleProvider) {
  installation_.CopyIn(L"orv_shipped.ini", L"XHTASVA.ini");
  for (const WCHAR* section : {kServices, kDefaultServices}) {
    ASSERT_EQ(Load(section), S_OK);
    EXPECT_STREQ(Value(kDllName).Value.lpszW, L"xhtsmpA.dll");
    EXPECT_EQ(FilesToDelete(rows_->aRow[0]), std::vector<WString>{L"xhtsmpA.dll"});
  }
}

}  // namespace
}  // namespace orv::test
