#include "ui/localisation.h"

#include <gtest/gtest.h>

#include "platform/identity.h"
#include "platform/process.h"
#include "tests/support/installation.h"
#include "tests/ui/installer_language.h"

namespace orv::ui {
namespace {

using test::Installation;
using test::RedirectedMachine;
using test::SetInstallerLanguage;

TEST(Language, SystemIdentifiersAreReducedToTheLanguagesServed) {
  const std::pair<LANGID, const wchar_t*> cases[] = {
      {1028, L"TW"},   {2052, L"CN"},   {3076 /* Hong Kong */, L"US"},
      {2057, L"US"},   {1027, L"US"},   {0x0411, L"JP"},
      {0x0c07, L"DE"}, {0x0c0a, L"ES"}, {0x041e, L"TH"},
      {0x0421, L"ID"}, {0x0c01, L"AR"}, {0x042a, L"US"},
      {0, L"US"},      {0x0414, L"NO"}, {0x0816, L"PT"}};
  for (const auto& [system, code] : cases)
    EXPECT_EQ(LanguageCode(LanguageFromSystem(system)), code) << system;
}

TEST(Language, InstallerTextIsHexadecimalAndMatchedWhole) {
  const std::pair<const wchar_t*, const wchar_t*> cases[] = {
      {L"9", L"US"},   {L"11", L"JP"}, {L"411", L"US"}, {L"404", L"TW"}, {L"804", L"CN"}, {L"1", L"AR"},
      {L"0x7", L"DE"}, {L"1E", L"TH"}, {L"1d", L"SE"},  {L"", L"US"},    {L"zz", L"US"},  {L"-7", L"US"}};
  for (const auto& [text, code] : cases)
    EXPECT_EQ(LanguageCode(LanguageFromInstallerText(text)), code) << text;
}

class InstalledCompanions : public testing::Test {
 protected:
  static std::wstring Chosen(Companion companion) { return CompanionPath(companion, process::Instance()); }
  std::wstring At(const wchar_t* name) const { return installation_.Path(name); }

  RedirectedMachine machine_;
  Installation installation_{L"XHTABA.dll"};
};

TEST_F(InstalledCompanions, InstallerLanguageWinsOverTheSystems) {
  const Language system = LanguageFromSystem(GetSystemDefaultLangID());
  EXPECT_EQ(InstalledLanguage(process::Instance()), system);
  SetInstallerLanguage(L"1");
  EXPECT_EQ(InstalledLanguage(process::Instance()), 1u);
  EXPECT_EQ(RightToLeftMessageFlags(process::Instance()), 0x180000u);
  SetInstallerLanguage(L"11");
  EXPECT_EQ(InstalledLanguage(process::Instance()), 17u);
  EXPECT_EQ(RightToLeftMessageFlags(process::Instance()), 0u);
  // A text that does not fit 16 bytes is a failed read.
  SetInstallerLanguage(L"00000011");
  EXPECT_EQ(InstalledLanguage(process::Instance()), system);
  // Its type does not matter.
  RegKey key = test::CreateInstallerKey();
  const wchar_t unterminated[] = {L'0', L'0', L'0', L'0', L'0', L'0', L'1', L'1'};
  ASSERT_EQ(key.SetBinary(L"InstallerLID", std::as_bytes(std::span(unterminated))), ERROR_SUCCESS);
  EXPECT_EQ(InstalledLanguage(process::Instance()), 17u);
}

TEST_F(InstalledCompanions, MissingFileOfTheLanguageFallsBackToTheUnitedStatesOfTheSameKind) {
  SetInstallerLanguage(L"7");
  EXPECT_EQ(Chosen(Companion::kMainHelp), At(L"XHTFHAUS.chm"));  // not checked for existence
  installation_.WriteTextFile(L"XHTFHADE.chm", "help");
  EXPECT_EQ(Chosen(Companion::kMainHelp), At(L"XHTFHADE.chm"));
  EXPECT_EQ(Chosen(Companion::kContextHelp), At(L"XHTFCAUS.chm"));
  EXPECT_EQ(Chosen(Companion::kSecondResourceLibrary), At(L"XHTFLAUS.dll"));
}

TEST_F(InstalledCompanions, ResourceLibraryIsAnOrdinaryModuleOfTheLanguage) {
  SetInstallerLanguage(L"7");
  EXPECT_EQ(LoadResourceLibrary(process::Instance()), nullptr);
  installation_.CopyIn(L"orv_stub.dll", L"XHTFCAUS.dll");
  installation_.CopyIn(L"orv_stub.dll", L"XHTFCADE.dll");
  const HMODULE loaded = LoadResourceLibrary(process::Instance());
  ASSERT_NE(loaded, nullptr);
  EXPECT_EQ(ModulePath(loaded), At(L"XHTFCADE.dll"));
  EXPECT_TRUE(FreeLibrary(loaded));
}

TEST(Companions, LibraryOfNoModelHasNone) {
  const RedirectedMachine machine;
  const Installation installation(L"unknown.dll");
  installation.CopyIn(L"orv_stub.dll", L"XHTFCAUS.dll");
  EXPECT_EQ(CompanionPath(Companion::kResourceLibrary, process::Instance()), L"");
  EXPECT_EQ(LoadResourceLibrary(process::Instance()), nullptr);
  EXPECT_EQ(InstalledLanguage(process::Instance()), LanguageFromSystem(GetSystemDefaultLangID()));
}

}  // namespace
}  // namespace orv::ui
