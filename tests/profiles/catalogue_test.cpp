// The catalogue as a file: what is read out of it, what refuses the whole of it, and the edits.
#include "profiles/catalogue.h"

#include "platform/private_profile.h"
#include "profiles/catalogue_text.h"
#include "props/foreign_values.h"
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
    "[Services]\r\nAbcde = A = book  \r\n"
    "[Abcde]\r\nPR_DISPLAY_NAME=Old\r\nPR_DISPLAY_NAME = The book\r\nPR_SERVICE_DLL_NAME=xht%c%c.dll\r\n"
    "PR_SERVICE_ENTRY_NAME=Entry\r\nPR_SERVICE_SUPPORT_FILES=x%c.dll, y.dll,\r\n"
    "PR_SERVICE_DELETE_FILES=100%%.dll\r\nPR_RESOURCE_FLAGS=2|UNKNOWN | SERVICE_SINGLE_COPY |\r\n"
    "PR_RESOURCE_FLAGS=\r\nUNKNOWN=1\r\npr_service_dll_name=no.dll\r\nPR_DISPLAY_NAME_W=x\r\n";

TEST_F(CatalogueTest, ARowHasTenColumnsInOrder) {
  const SPropValue expected[] = {Binary(0x0FF60102, L"Abcde", 11),
                                 Unicode(0x3D09001F, L"Abcde"),
                                 Unicode(0x3006001F, L"A = book"),
                                 Unicode(0x3001001F, L"The book"),
                                 Unicode(0x3D0A001F, L"xhtAA.dll"),
                                 String8(0x3D0B001E, "Entry"),
                                 test::Value(0x3D0F101F),
                                 test::Value(0x3D10101F),
                                 Binary(0x3D0C0102, ""),
                                 Long(0x30090003, 2)};
  installation_.WriteCatalogue(kOneService);
  ASSERT_EQ(Load(), S_OK);
  ASSERT_EQ(rows_->cRows, 1u);
  const SRow& row = rows_->aRow[0];
  ASSERT_EQ(row.cValues, std::size(expected));
  for (ULONG i = 0; i < row.cValues; ++i) {
    ASSERT_EQ(row.lpProps[i].ulPropTag, expected[i].ulPropTag);
    if ((row.lpProps[i].ulPropTag & MV_FLAG) != 0) continue;  // compared below
    EXPECT_EQ(CompareNode(*Node(row.lpProps[i]), expected[i]), S_OK) << i;
  }
  const auto& support = Value(kSupportFiles).Value.MVszW;
  EXPECT_EQ(std::vector<WString>(support.lppszW, support.lppszW + support.cValues),
            (std::vector<WString>{L"xA.dll", L" y.dll", L""}));
  EXPECT_EQ(FilesToDelete(row), std::vector<WString>{L"100%.dll"});
}

TEST_F(CatalogueTest, OneBadServiceRefusesTheCatalogue) {
  const struct {
    const char* text;
    HRESULT result;
  } cases[] = {
      {"[Other]\r\nA=B\r\n", MAPI_E_INVALID_PARAMETER},
      {"[Services]\r\n[A]\r\nx=1\r\n", MAPI_E_INVALID_PARAMETER},
      {"[Services]\r\nA=a\r\nB=\r\n[A]\r\nx=1\r\n", MAPI_E_BAD_VALUE},
      {"[Services]\r\nA B=a\r\n[A B]\r\nx=1\r\n", MAPI_E_BAD_VALUE},
      {"[Services]\r\nA=a\r\nB=b\r\nA=c\r\n[A]\r\nx=1\r\n[B]\r\nx=1\r\n", MAPI_E_COLLISION},
      {"[Services]\r\nA=a\r\nB=b\r\n[A]\r\nx=1\r\n", MAPI_E_INVALID_PARAMETER},
      {"[Services]\r\nA=a\r\nB=b\r\n[A]\r\nx=1\r\n[B]\r\n", MAPI_E_INVALID_PARAMETER},
      {"[Services]\r\nA=a\r\n[A]\r\nPR_SERVICE_DLL_NAME=abcdefghijkl.dll\r\n", MAPI_E_BAD_VALUE},
      {"[Services]\r\nA=a\r\n[A]\r\nPR_SERVICE_DLL_NAME=abcdefghij%%.dll\r\n", S_OK},
      {"[Services]\r\nA=a\r\n[A]\r\nPR_SERVICE_DLL_NAME=abcdefghijk%%.dll\r\n", MAPI_E_BAD_VALUE},
      {"[Services]\r\nA=a\r\n[A]\r\nPR_SERVICE_DLL_NAME=%1c\r\n", MAPI_E_BAD_VALUE},
      {"[Services]\r\nA=a\r\n[A]\r\nPR_SERVICE_DELETE_FILES=100%\r\n", MAPI_E_BAD_VALUE},
  };
  for (const auto& c : cases) {
    installation_.WriteCatalogue(c.text);
    EXPECT_EQ(Load(), c.result) << c.text;
    EXPECT_EQ(!rows_, FAILED(c.result));
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
  for (; *lines != 0; lines += found.back().size() + 1) found.emplace_back(lines);
  return found;
}

// What the text says of a section is what the platform says of it. Where the platform alone is to be asked the text
// says nothing, and the section is read all the same.
TEST_F(CatalogueTest, TheTextSaysWhatThePlatformSaysOrNothing) {
  using namespace std::string_view_literals;
  const WString path = installation_.Path(L"tricky.ini");
  for (const std::string_view plain :
       {"[A]\r\nk=v\r\n"sv, "[a]\nk=v"sv, "[A]\r\nk=first\r\n[a]\r\nk=second\r\n"sv,
        "[A]\r\nk=\xE4\xDF=[b]\r\n"sv,
        "top=1\r\n\r\n[B]\r\nk=b\r\n[A]\r\n \tk \t=\t v w;x\r\n;c\r\n\r\nk=again\r\nempty=\r\n[C]\r\n"sv,
        "\xFF\xFE[\0A\0]\0\n\0k\0=\0\x04\x20\n\0"sv}) {
    installation_.WriteTextFile(L"tricky.ini", plain);
    const CatalogueText text(ReadProfileText(path));
    MapiBuffer<WCHAR> expected;
    ASSERT_EQ(ReadSection(path, L"A", expected), S_OK) << plain;
    ASSERT_NE(text.Section(L"A"), nullptr) << plain;
    EXPECT_EQ(LinesOf(text.Section(L"A")), LinesOf(expected.Get())) << plain;
  }
  for (const std::string_view peculiar :
       {"[A]\r\nk=v\r\n[\xC4]\r\nk=1\r\n", "[A]\r\nk=v \r\n", "[A]\r\nk=\"v\"\r\n", "[A]\r\nword\r\nk=v\r\n",
        "[A]\r\n=v\r\n", "[A]\r\n#k=v\r\n", "[A]\r\nk=v\r\n\x1A", "[A]\r\nk=v\rj=w\r\n", " [A]\r\nk=v\r\n",
        "[A] x\r\nk=v\r\n", "[A]\r\nk=v\r\n[B\r\n", "\xEF\xBB\xBF[A]\r\nk=v\r\n"}) {
    installation_.WriteTextFile(L"tricky.ini", peculiar);
    EXPECT_EQ(CatalogueText(ReadProfileText(path)).Section(L"A"), nullptr) << peculiar;
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

TEST_F(CatalogueTest, TheLetterFollowsFromTheExactSpellingInValuesOnly) {
  const struct {
    const WCHAR *library, *file;
    HRESULT plain, lettered;
  } cases[] = {{L"XHTABB.DLL", L"XHTASVB.ini", S_OK, MAPI_E_BAD_VALUE},
               {L"other.dll", L"chosen.ini", MAPI_E_CALL_FAILED, MAPI_E_CALL_FAILED}};
  for (const auto& c : cases) {
    const Installation installation(c.library);
    installation.WriteTextFile(c.file, "[Services]\r\nA=a\r\n[A]\r\nPR_SERVICE_DLL_NAME=a.dll\r\n");
    EXPECT_EQ(DefaultPath(), FAILED(c.plain) ? WString() : installation.Path(c.file));
    EXPECT_EQ(Load(), c.plain);
    EXPECT_EQ(catalogue::Load(installation.Path(c.file), kServices, rows_), S_OK);
    installation.WriteTextFile(c.file, "[Services]\r\nA=a\r\n[A]\r\nPR_SERVICE_DLL_NAME=a%c.dll\r\n");
    EXPECT_EQ(Load(), c.lettered);
  }
}

TEST_F(CatalogueTest, InstallCopiesAServiceAndRemoveTakesItOut) {
  const WString source = installation_.Path(L"source.ini");
  installation_.WriteTextFile(L"source.ini",
                              "[Services]\r\nA=Book a\r\nB=b\r\nC=c\r\n[Default Services]\r\nA=Default a\r\n"
                              "[A]\r\nPR_DISPLAY_NAME=Name\r\nOTHER=kept too\r\n[B]\r\nx=1\r\n");
  installation_.WriteCatalogue("[Services]\r\nC=own\r\n[C]\r\nx=1\r\n[A]\r\nOLD=1\r\n");
  const auto install = [&](const WCHAR* service) {
    SPropValue name = Unicode(PR_SERVICE_NAME_W, service);
    return InstallService(source, {}, {0, 1, &name});
  };
  EXPECT_EQ(install(L"A"), S_OK);
  EXPECT_EQ(install(L"B"), S_OK);
  // Not listed: nothing happens. Listed without a section: the target loses the service.
  EXPECT_EQ(install(L"unknown"), S_OK);
  EXPECT_EQ(install(L"C"), MAPI_E_INVALID_PARAMETER);
  const struct {
    const WCHAR *section, *key, *value;
  } installed[] = {{kServices, L"A", L"Book a"},  {kDefaultServices, L"A", L"Default a"},
                   {L"A", L"OTHER", L"kept too"}, {L"A", L"OLD", L""},
                   {kDefaultServices, L"B", L""}, {kServices, L"unknown", L""},
                   {kServices, L"C", L""},        {L"C", L"x", L""}};
  for (const auto& c : installed) {
    EXPECT_EQ(ReadProfileValue(DefaultPath(), c.section, c.key, 100), c.value) << &c - installed;
  }

  SPropValue a = Unicode(PR_SERVICE_NAME_W, L"A");
  RemoveService({}, {0, 1, &a});
  ULONG count = 0;
  EXPECT_EQ(CountServices({}, kServices, count), S_OK);
  EXPECT_EQ(count, 1u);
  for (const WCHAR* section : {kDefaultServices, L"A"})
    EXPECT_EQ(CountServices({}, section, count), MAPI_E_INVALID_PARAMETER);
}

// "line section service reason code" of each line left out, in hexadecimal code.
std::vector<std::string> Faults(const SRowSet& leftOut) {
  const auto narrow = [](const SPropValue* value) {
    const WString text = TextOf(value);
    return std::string(text.begin(), text.end());
  };
  std::vector<std::string> faults;
  for (ULONG i = 0; i < leftOut.cRows; ++i) {
    const ForeignValues row(leftOut.aRow[i]);
    const bool isMild = row.At(4, PR_ORV_CATALOGUE_STATUS)->Value.l == MAPI_E_UNABLE_TO_COMPLETE;
    faults.push_back(std::to_string(NumberOf(row.At(0, PR_ORV_CATALOGUE_LINE))) + " " +
                     narrow(row.At(1, PR_ORV_CATALOGUE_SECTION_W)) + " " +
                     narrow(row.At(2, PR_SERVICE_NAME_W)) + " " +
                     std::to_string(NumberOf(row.At(3, PR_ORV_CATALOGUE_REASON))) + (isMild ? "" : "!") +
                     " " + narrow(row.At(5, PR_ORV_CATALOGUE_TEXT_W)));
  }
  return faults;
}

// What refuses the whole list when a catalogue is loaded is told line by line, and whatever else is left out.
TEST_F(CatalogueTest, AReportTellsEveryLineThatIsLeftOut) {
  installation_.WriteCatalogue(
      "; first\r\n[Services]\r\nGood=Book=1\r\n\r\nbad\r\nGood=again\r\nEmpty=e\r\nFormat=f\r\nLong=l\r\n"
      "Files=x\r\nBig=b\r\n;c\r\n[Default "
      "Services]\r\nGood=Book\r\nOther=o\r\n[Good]\r\nPR_DISPLAY_NAME=G\r\n"
      "PR_SERVICE_SUPPORT_FILES=XHTASV%c.ini, "
      "xhtasva.ini,\r\n[Format]\r\nx=1\r\nPR_SERVICE_DLL_NAME=a%d.dll\r\n"
      "[Long]\r\nPR_SERVICE_DLL_NAME=abcdefghijkl.dll\r\n[Files]\r\nPR_SERVICE_SUPPORT_FILES=no.dll, "
      "no2.dll\r\n"
      "[Other]\r\nx=1\r\n[Big]\r\nx=" +
      std::string(CatalogueText::kMostCharacters, 'x') + "\r\n");
  MapiBuffer<WCHAR> path;
  RowSetPtr offered, leftOut;
  ASSERT_EQ(OrvOpenCatalogue(nullptr, MAPI_UNICODE, path.Put(), offered.Put(), leftOut.Put()), S_OK);
  EXPECT_EQ(WString(path.Get()), DefaultPath());
  EXPECT_EQ(Faults(*leftOut), (std::vector<std::string>{
                                  "5 Services  1! bad", "6 Services Good 2! again", "7 Services Empty 3! e",
                                  "21 Format Format 5! a%d.dll", "23 Long Long 6! abcdefghijkl.dll",
                                  "10 Services Files 7 no.dll", "10 Services Files 7 no2.dll",
                                  "11 Services Big 4! b", "15 Default Services Other 8 o"}));
  ASSERT_EQ(offered->cRows, 1u);
  const ForeignValues row(offered->aRow[0]);
  ASSERT_EQ(row.Count(), kColumnCount + 2u);
  EXPECT_STREQ(TextOf(row.At(kProviderDisplay, PR_PROVIDER_DISPLAY_W)), L"Book=1");
  EXPECT_EQ(NumberOf(row.At(kColumnCount, PR_ORV_CATALOGUE_LINE)), 3u);
  EXPECT_EQ(row.At(kColumnCount + 1, PR_ORV_CATALOGUE_DEFAULT)->Value.b, 1);
}

TEST_F(CatalogueTest, AReportNamesTheFileThatItCannotRead) {
  const auto open = [](const WCHAR* file, MapiBuffer<WCHAR>& path) {
    RowSetPtr offered, leftOut;
    const HRESULT hr = OrvOpenCatalogue(file, MAPI_UNICODE, path.Put(), offered.Put(), leftOut.Put());
    EXPECT_TRUE(FAILED(hr) == !offered && FAILED(hr) == !leftOut);
    return hr;
  };
  MapiBuffer<WCHAR> path;
  EXPECT_EQ(open(nullptr, path), MAPI_E_CALL_FAILED);
  EXPECT_EQ(WString(path.Get()), DefaultPath());
  installation_.WriteCatalogue("[Services]\r\n");
  EXPECT_EQ(open(nullptr, path), MAPI_E_INVALID_PARAMETER);
  installation_.WriteCatalogue("[Services]\r\nA=a\r\n[A]\r\nx=1\r\n");
  EXPECT_EQ(open(nullptr, path), S_OK);
}

TEST_F(CatalogueTest, TheDeliveredCatalogueOffersThePersonalBookFirstAndByDefault) {
  installation_.CopyIn(L"orv_shipped.ini", L"XHTASVA.ini");
  for (const WCHAR* section : {kServices, kDefaultServices}) {
    ASSERT_EQ(Load(section), S_OK);
    EXPECT_EQ(rows_->cRows, section == kServices ? 2u : 1u);
    EXPECT_STREQ(Value(kDllName).Value.lpszW, L"xhtpabA.dll");
    EXPECT_EQ(FilesToDelete(rows_->aRow[0]), std::vector<WString>{L"xhtpabA.dll"});
  }
}

}  // namespace
}  // namespace orv::test
