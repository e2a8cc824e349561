// Copies between objects that keep their properties, and between the containers of a scripted provider.
#include "hosting/object_copy.h"

#include "props/base_prop.h"
#include "tests/addrbook/address_lists.h"

namespace orv::test {
namespace {

using Texts = std::vector<std::string>;

constexpr ULONG kText = PROP_TAG(PT_UNICODE, 0x6601);
constexpr ULONG kNumber = PROP_TAG(PT_LONG, 0x6602);
constexpr ULONG kBytes = PROP_TAG(PT_BINARY, 0x6603);

class User final : public PropObject<IMailUser> {
 public:
  explicit User(std::vector<SPropValue> values) { EXPECT_EQ(LoadLocked(values), S_OK); }
  PropList& Stored() { return Properties(); }

 private:
  bool Supports(REFIID iid) const override {
    return IsOneOf(iid, IID_IUnknown, IID_IMAPIProp, IID_IMailUser);
  }
};

class PropCopyTest : public testing::Test {
 protected:
  CopyEnds Ends(const IID& from, const IID& to) { return {&from, source_.Get(), &to, target_.Get()}; }
  HRESULT TargetHas(const SPropValue& value) { return target_->Stored().FindAndCompare(value); }

  ComPtr<User> source_ =
      ComPtr<User>::Adopt(new User({Binary(PR_ENTRYID, "source"), Long(PR_OBJECT_TYPE, MAPI_MAILUSER),
                                    Unicode(kText, ORV_W("new")), Long(kNumber, 1), Binary(kBytes, "b")}));
  ComPtr<User> target_ =
      ComPtr<User>::Adopt(new User({Binary(PR_ENTRYID, "target"), Unicode(kText, ORV_W("old"))}));
};

TEST_F(PropCopyTest, BinariesAreNeverCopied) {
  MapiBuffer<SPropProblemArray> problems;
  ASSERT_EQ(CopyCommonProps(nullptr, source_.Get(), target_.Get(), 0, problems.Put()), S_OK);
  EXPECT_EQ(TargetHas(Unicode(kText, ORV_W("new"))), S_OK);
  EXPECT_EQ(TargetHas(Long(kNumber, 1)), S_OK);
  EXPECT_EQ(target_->Stored().Find(kBytes), nullptr);
  EXPECT_EQ(TargetHas(Binary(PR_ENTRYID, "target")), S_OK);
  // PR_OBJECT_TYPE was handed over and refused by the destination: its problem comes back.
  ASSERT_TRUE(problems);
  EXPECT_EQ(problems->aProblem[0].scode, MAPI_E_COMPUTED);
}

TEST_F(PropCopyTest, NoReplaceKeepsWhatIsThere) {
  for (const bool all : {true, false}) {
    Tags tags{kNumber, kBytes, kText};
    SPropTagArray* include = all ? nullptr : tags.Get();
    ASSERT_EQ(CopyCommonProps(include, source_.Get(), target_.Get(), MAPI_NOREPLACE, nullptr), S_OK);
    EXPECT_EQ(TargetHas(Unicode(kText, ORV_W("old"))), S_OK);
    EXPECT_EQ(TargetHas(Long(kNumber, 1)), S_OK);
    PropNodePtr removed;
    target_->Stored().Remove(kNumber, removed);
  }
}

TEST_F(PropCopyTest, RefusedBeforeAnythingIsCopied) {
  Tags plain{kText};
  Tags contents{kText, PR_CONTAINER_CONTENTS};
  Tags hierarchy{kText, PR_CONTAINER_HIERARCHY};
  const CopyEnds good = Ends(IID_IMAPIProp, IID_IMAPIProp);
  CopyEnds same = good;
  same.destination = same.source;
  const struct {
    CopyEnds ends;
    SPropTagArray* include;
    HRESULT expected;
  } cases[] = {
      {good, nullptr, MAPI_E_INVALID_PARAMETER},
      {Ends(IID_IUnknown, IID_IMAPIProp), plain.Get(), MAPI_E_INTERFACE_NOT_SUPPORTED},
      {Ends(IID_IMAPIProp, IID_IMAPITable), plain.Get(), MAPI_E_INTERFACE_NOT_SUPPORTED},
      {same, plain.Get(), MAPI_E_NO_ACCESS},
      {Ends(IID_IMAPIProp, IID_IMAPIContainer), plain.Get(), MAPI_E_NO_SUPPORT},
      {Ends(IID_IMAPIContainer, IID_IABContainer), contents.Get(), MAPI_E_NO_SUPPORT},
      {Ends(IID_IMailUser, IID_IABContainer), hierarchy.Get(), MAPI_E_NO_SUPPORT},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CopyObjectProps(c.ends, c.include, 0, nullptr), c.expected) << &c - cases;
  }
  EXPECT_EQ(TargetHas(Unicode(kText, ORV_W("old"))), S_OK);
  // A list has no hierarchy, so that tag asks for nothing of it.
  EXPECT_EQ(CopyObjectProps(Ends(IID_IMailUser, IID_IDistList), hierarchy.Get(), 0, nullptr), S_OK);
  EXPECT_EQ(TargetHas(Unicode(kText, ORV_W("new"))), S_OK);
}

TEST_F(PropCopyTest, SuccessWithoutValuesIsACode) {
  FakeScript script("liar", FakeUid(1), nullptr);
  script.lies = {{"Object:GetProps", FakeLie::kNoArray}};
  const ComPtr<IUnknown> liar = OpenFake(script, "user");
  EXPECT_EQ(CopyCommonProps(Tags{kText}.Get(), liar.Get(), target_.Get(), 0, nullptr), MAPI_E_CALL_FAILED);
  EXPECT_EQ(CopyCommonProps(Tags{kText}.Get(), source_.Get(), liar.Get(), MAPI_NOREPLACE, nullptr),
            MAPI_E_CALL_FAILED);
}

// What is made of "x" is "+x"; what was done is noted in order.
class CopyScript final : public FakeScript {
 public:
  CopyScript() : FakeScript("p", FakeUid(1), nullptr) {}

  const char* OnCreate(const std::string& container, const std::string& original) override {
    if (original == failing) return nullptr;
    made_ = "+" + original;
    done.push_back("create " + original + " in " + container);
    if (const auto node = nodes.find(original); node != nodes.end()) {
      nodes[made_] = node->second;
      nodes[made_].contents.clear();
    }
    if (!mirror.empty()) nodes[mirror].contents.push_back(made_);
    return made_.c_str();
  }
  void OnSet(const std::string&, const SPropValue* values, ULONG count) override {
    for (ULONG i = 0; i < count; ++i) EXPECT_NE(values[i].ulPropTag, PR_ENTRYID);
    named =
        count > 1 && values[1].ulPropTag == PR_DISPLAY_NAME_W ? FakeText(values[1].Value.lpszW) : FakeText();
  }
  void OnSave(const std::string& key) override { done.push_back("save " + key); }

  Texts done;
  FakeText named;       // the name that was set last
  std::string failing;  // creating a copy of this one fails
  std::string mirror;   // shows what was made wherever it was made

 private:
  std::string made_;
};

class ContainerCopyTest : public testing::Test {
 protected:
  // Two entries, a list of one of them in a list that holds itself, a container with an entry beside which its
  // hierarchy shows the containers that are copied from and to.
  ContainerCopyTest() {
    Make("inner", MAPI_DISTLIST, {"b", "outer"});
    Make("outer", MAPI_DISTLIST, {"inner", "a"});
    Make("sub", MAPI_ABCONT, {"b"});
    Make("from", MAPI_ABCONT, {"outer", "a"});
    Make("to", MAPI_ABCONT, {});
    script_.hierarchy = {"sub", "from", "to"};
  }
  ~ContainerCopyTest() override { EXPECT_EQ(script_.liveObjects, 0); }
  void Make(const std::string& key, ULONG type, Texts contents) {
    script_.nodes[key].type = type;
    script_.nodes[key].contents = std::move(contents);
  }
  HRESULT Copy(std::initializer_list<ULONG> tags, const std::string& from = "from",
               const std::string& to = "to", const IID& iid = IID_IABContainer) {
    const ComPtr<IUnknown> source = OpenFake(script_, from), target = OpenFake(script_, to);
    return CopyObjectProps({&iid, source.Get(), &iid, target.Get()}, Tags(tags).Get(), 0, nullptr);
  }

  CopyScript script_;
};

TEST_F(ContainerCopyTest, IsDepthFirstAndEntersNothingTwice) {
  ASSERT_EQ(Copy({PR_CONTAINER_CONTENTS, PR_CONTAINER_HIERARCHY}), S_OK);
  const Texts expected = {"create outer in to", "save +outer", "create inner in +outer", "save +inner",
                          "create b in +inner", "save +b",     "create a in +outer",     "save +a",
                          "create a in to",     "save +a",     "create sub in to",       "save +sub",
                          "create b in +sub",   "save +b"};
  EXPECT_EQ(script_.done, expected);
  EXPECT_EQ(script_.named, FakeText({'b'}));
}

TEST_F(ContainerCopyTest, TheTagsSayWhatIsWalked) {
  ASSERT_EQ(Copy({PR_CONTAINER_HIERARCHY}), S_OK);
  EXPECT_EQ(script_.done, (Texts{"create sub in to", "save +sub"}));
  script_.done.clear();
  // Of the list copied into one of its own members only what is not that member.
  ASSERT_EQ(Copy({PR_CONTAINER_CONTENTS, PR_CONTAINER_HIERARCHY}, "outer", "inner", IID_IDistList), S_OK);
  EXPECT_EQ(script_.done, (Texts{"create a in inner", "save +a"}));
}

TEST_F(ContainerCopyTest, WhatWasMadeIsNotEnteredEither) {
  Make("sub", MAPI_ABCONT, {});
  script_.mirror = "sub";
  ASSERT_EQ(Copy({PR_CONTAINER_CONTENTS, PR_CONTAINER_HIERARCHY}), S_OK);
  EXPECT_EQ(std::count(script_.done.begin(), script_.done.end(), "create +outer in +sub"), 0);
  // Both copies of the entry show there, and entries are copied wherever they show.
  EXPECT_EQ(std::count(script_.done.begin(), script_.done.end(), "create +a in +sub"), 2);
}

TEST_F(ContainerCopyTest, TheFirstFailureEndsIt) {
  script_.failing = "b";
  EXPECT_EQ(Copy({PR_CONTAINER_CONTENTS}), MAPI_E_NO_ACCESS);
  EXPECT_EQ(script_.done.back(), "save +inner");
  for (const char* operation : {"Object:GetContentsTable", "Table:SetColumns", "Table:QueryRows",
                                "Object:OpenEntry", "Object:CreateEntry", "Object:SaveChanges"}) {
    script_.answers = {{operation, {S_OK, Throws::kInteger}}};
    EXPECT_EQ(GuardedForeign([&] { return Copy({PR_CONTAINER_CONTENTS}); }), MAPI_E_CALL_FAILED) << operation;
  }
}

TEST_F(ContainerCopyTest, DepthIsNoLimit) {
  constexpr int kDepth = 20000;
  for (int i = 0; i < kDepth; ++i) Make(std::to_string(i), MAPI_DISTLIST, {std::to_string(i + 1)});
  Make("from", MAPI_ABCONT, {"0"});
  ASSERT_EQ(Copy({PR_CONTAINER_CONTENTS}), S_OK);
  EXPECT_EQ(script_.done.size(), 2u * (kDepth + 1));
}

}  // namespace
}  // namespace orv::test
