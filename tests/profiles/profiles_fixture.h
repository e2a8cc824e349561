// What the tests of profiles and services share: a registry and an installation of their own, and short ways to make
// values, read tables and look at what is stored.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orv/orvapi.h"
#include "orv/orvtags.h"
#include "platform/buffer.h"
#include "platform/com_ptr.h"
#include "profiles/prof_admin.h"
#include "props/foreign_values.h"
#include "tests/props/samples.h"
#include "tests/support/installation.h"
#include "tests/support/redirected_registry.h"

namespace orv::test {

inline const WString kProfilesPath = L"Software\\Tovan\\Velmora\\VX100 series\\Orv Profiles";

inline WString ProfilePath(const WString& profile) { return kProfilesPath + L"\\" + profile; }

// The text of one column of every row, read one row at a time from where the table stands.
inline std::vector<WString> Column(IMAPITable& table, ULONG tag) {
  std::vector<WString> texts;
  for (;;) {
    RowSetPtr rows;
    if (FAILED(table.QueryRows(1, 0, rows.Put())) || rows->cRows == 0) return texts;
    const WCHAR* text = TextOf(ForeignValues(rows->aRow[0]).Find(tag));
    texts.emplace_back(text == nullptr ? L"(none)" : text);
  }
}

// UID of the first row of a fresh table.
inline MAPIUID FirstUid(IABServiceAdmin& services) {
  ComPtr<IMAPITable> table;
  RowSetPtr rows;
  MAPIUID uid{};
  EXPECT_EQ(services.GetMsgServiceTable(MAPI_UNICODE, table.Put()), S_OK);
  EXPECT_EQ(table->QueryRows(1, 0, rows.Put()), S_OK);
  if (rows->cRows == 1) std::memcpy(&uid, rows->aRow[0].lpProps[8].Value.bin.lpb, sizeof uid);
  return uid;
}

using Names = std::vector<WString>;

class ProfilesTest : public testing::Test {
 protected:
  ProfilesTest() { EXPECT_EQ(CreateProfAdmin(nullptr, admin_.Put()), S_OK); }

  Names Profiles() {
    ComPtr<IMAPITable> table;
    EXPECT_EQ(admin_->GetProfileTable(MAPI_UNICODE, table.Put()), S_OK);
    if (!table) return {L"(no table)"};
    EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
    return Column(*table, PR_DISPLAY_NAME_W);
  }

  ComPtr<IABServiceAdmin> Services(const WCHAR* profile) {
    ComPtr<IABServiceAdmin> services;
    EXPECT_EQ(admin_->AdminServices(profile, MAPI_UNICODE, services.Put()), S_OK);
    return services;
  }

  RedirectedRegistry registry_;
  Installation installation_;
  ComPtr<IOrvProfAdmin> admin_;
};

}  // namespace orv::test
