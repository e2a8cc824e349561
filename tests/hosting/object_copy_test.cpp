#include "hosting/object_copy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <string>

#include "platform/com_ptr.h"
#include "platform/faults.h"
#include "props/base_prop.h"
#include "props/base_table.h"
#include "props/prop_value.h"
#include "tests/props/samples.h"

namespace orv::test {
namespace {

class Book;

// What the book knows of an object, whichever its interface.
struct Entry {
  virtual ~Entry() = default;
  virtual IUnknown* Unknown() = 0;
  virtual PropList& Stored() = 0;

  ULONG type = 0;
  std::vector<std::string> children;
};

// Every object of a test by its identifier, and what was done to them in order.
class Book {
 public:
  Entry& Make(const std::string& id, ULONG type, std::vector<std::string> children = {});
  Entry& operator[](const std::string& id) { return *entries_.at(id); }
  HRESULT Open(const std::string& id, IUnknown** out) {
    *out = (*this)[id].Unknown();
    (*out)->AddRef();
    return S_OK;
  }

  std::vector<std::string> log;
  std::string failing;  // creating a copy of this one fails
  std::string mirror;   // shows what was made wherever it was made

 private:
  struct Releaser {
    void operator()(Entry* entry) const { entry->Unknown()->Release(); }
  };
  std::map<std::string, std::unique_ptr<Entry, Releaser>> entries_;
};

std::string IdOf(ULONG size, LPENTRYID id) { return {reinterpret_cast<const char*>(id), size}; }

// A container or a list; a mail user is one too, which nobody asks for its children.
template <class Interface>
class Container final : public PropObject<Interface>, public Entry {
 public:
  Container(Book& book, const std::string& id, ULONG objectType, const IID& iid)
      : book_(book), id_(id), iid_(iid) {
    type = objectType;
    const SPropValue values[] = {Binary(PR_ENTRYID, id_), Long(PR_OBJECT_TYPE, static_cast<LONG>(type)),
                                 String8(PR_DISPLAY_NAME_A, id_.c_str())};
    EXPECT_EQ(S_OK, this->LoadLocked(values));
  }
  IUnknown* Unknown() override { return static_cast<Interface*>(this); }
  PropList& Stored() override { return this->Properties(); }

  HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG, LPMAPITABLE* table) override {
    return TableOf(false, table);
  }
  HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG, LPMAPITABLE* table) override {
    return TableOf(true, table);
  }
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID id, LPCIID, ULONG, ULONG* entryType,
                                      LPUNKNOWN* out) override {
    *entryType = book_[IdOf(size, id)].type;
    return book_.Open(IdOf(size, id), out);
  }
  HRESULT STDMETHODCALLTYPE CreateEntry(ULONG size, LPENTRYID id, ULONG flags, LPMAPIPROP* out) override {
    const std::string original = IdOf(size, id);
    if (flags != 0 || original == book_.failing) return MAPI_E_NO_ACCESS;
    const std::string made = "+" + original;
    book_.log.push_back("create " + original + " in " + id_);
    book_.Make(made, book_[original].type);
    children.push_back(made);
    if (!book_.mirror.empty()) book_[book_.mirror].children.push_back(made);
    return book_[made].Unknown()->QueryInterface(IID_IMAPIProp, reinterpret_cast<void**>(out));
  }
  HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override {
    book_.log.push_back("save " + id_);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetSearchCriteria(LPSRestriction, LPENTRYLIST, ULONG) override { return E_FAIL; }
  HRESULT STDMETHODCALLTYPE GetSearchCriteria(ULONG, LPSRestriction*, LPENTRYLIST*, ULONG*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE CopyEntries(LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE DeleteEntries(LPENTRYLIST, ULONG) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE ResolveNames(LPSPropTagArray, ULONG, LPADRLIST, LPFlagList) override {
    return MAPI_E_NO_SUPPORT;
  }

 private:
  bool Supports(REFIID iid) const override {
    return IsOneOf(iid, IID_IUnknown, IID_IMAPIProp, IID_IMAPIContainer, iid_);
  }
  HRESULT TableOf(bool containers, LPMAPITABLE* table) {
    CBaseTable rows;
    for (const std::string& child : children) {
      const ULONG childType = book_[child].type;
      if ((childType == MAPI_ABCONT) != containers) continue;
      std::vector<SPropValue> values = {Binary(PR_ENTRYID, child),
                                        Long(PR_OBJECT_TYPE, static_cast<LONG>(childType))};
      EXPECT_EQ(S_OK, rows.Rows().Add(Row(values), rows.Rows().Count()));
    }
    return CreateTable(std::move(rows), table);
  }

  Book& book_;
  const std::string id_;
  const IID iid_;
};

Entry& Book::Make(const std::string& id, ULONG type, std::vector<std::string> children) {
  Entry* entry = nullptr;
  if (type == MAPI_DISTLIST) {
    entry = new Container<IDistList>(*this, id, type, IID_IDistList);
  } else {
    entry = new Container<IABContainer>(*this, id, type, IID_IABContainer);
  }
  entry->children = std::move(children);
  entries_[id].reset(entry);
  return *entry;
}

constexpr ULONG kText = PROP_TAG(PT_UNICODE, 0x6601);
constexpr ULONG kNumber = PROP_TAG(PT_LONG, 0x6602);
constexpr ULONG kBytes = PROP_TAG(PT_BINARY, 0x6603);

class PropCopy : public testing::Test {
 protected:
  PropCopy() {
    PropList& source = book_.Make("source", MAPI_MAILUSER).Stored();
    EXPECT_EQ(S_OK, source.Set(Unicode(kText, ORV_W("new"))));
    EXPECT_EQ(S_OK, source.Set(Long(kNumber, 1)));
    EXPECT_EQ(S_OK, source.Set(Binary(kBytes, "b")));
    EXPECT_EQ(S_OK, book_.Make("target", MAPI_MAILUSER).Stored().Set(Unicode(kText, ORV_W("old"))));
  }
  CopyEnds Ends(const IID& from, const IID& to) { return {&from, Source(), &to, Destination()}; }
  IUnknown* Source() { return book_["source"].Unknown(); }
  IUnknown* Destination() { return book_["target"].Unknown(); }
  PropList& Target() { return book_["target"].Stored(); }

  Book book_;
};

TEST_F(PropCopy, BinariesAreNeverCopied) {
  MapiBuffer<SPropProblemArray> problems;
  ASSERT_EQ(S_OK, CopyCommonProps(nullptr, Source(), Destination(), 0, problems.Put()));
  EXPECT_EQ(S_OK, Target().FindAndCompare(Unicode(kText, ORV_W("new"))));
  EXPECT_EQ(S_OK, Target().FindAndCompare(Long(kNumber, 1)));
  EXPECT_EQ(nullptr, Target().Find(kBytes));
  EXPECT_EQ(S_OK, Target().FindAndCompare(Binary(PR_ENTRYID, "target")));
  // PR_OBJECT_TYPE was handed over and refused by the destination: its problem comes back.
  ASSERT_TRUE(problems);
  EXPECT_EQ(MAPI_E_COMPUTED, problems->aProblem[0].scode);
}

TEST_F(PropCopy, NoReplaceKeepsWhatIsThere) {
  for (const bool all : {true, false}) {
    Tags tags{kNumber, kBytes, kText};
    ASSERT_EQ(S_OK,
              CopyCommonProps(all ? nullptr : tags.Get(), Source(), Destination(), MAPI_NOREPLACE, nullptr));
    EXPECT_EQ(S_OK, Target().FindAndCompare(Unicode(kText, ORV_W("old"))));
    EXPECT_EQ(S_OK, Target().FindAndCompare(Long(kNumber, 1)));
    PropNodePtr removed;
    Target().Remove(kNumber, removed);
  }
}

TEST_F(PropCopy, RefusedBeforeAnythingIsCopied) {
  Tags plain{kText};
  Tags contents{kText, PR_CONTAINER_CONTENTS};
  Tags hierarchy{kText, PR_CONTAINER_HIERARCHY};
  CopyEnds same = Ends(IID_IMAPIProp, IID_IMAPIProp);
  same.destination = same.source;
  const struct {
    CopyEnds ends;
    SPropTagArray* include;
    HRESULT expected;
  } cases[] = {
      {Ends(IID_IMAPIProp, IID_IMAPIProp), nullptr, MAPI_E_INVALID_PARAMETER},
      {Ends(IID_IUnknown, IID_IMAPIProp), plain.Get(), MAPI_E_INTERFACE_NOT_SUPPORTED},
      {Ends(IID_IMAPIProp, IID_IMAPITable), plain.Get(), MAPI_E_INTERFACE_NOT_SUPPORTED},
      {same, plain.Get(), MAPI_E_NO_ACCESS},
      {Ends(IID_IMAPIProp, IID_IMAPIContainer), plain.Get(), MAPI_E_NO_SUPPORT},
      {Ends(IID_IMAPIContainer, IID_IABContainer), contents.Get(), MAPI_E_NO_SUPPORT},
      {Ends(IID_IMailUser, IID_IABContainer), hierarchy.Get(), MAPI_E_NO_SUPPORT},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.expected, CopyObjectProps(c.ends, c.include, 0, nullptr)) << &c - cases;
  }
  EXPECT_EQ(S_OK, Target().FindAndCompare(Unicode(kText, ORV_W("old"))));
  // A list has no hierarchy, so that tag asks for nothing of it.
  EXPECT_EQ(S_OK, CopyObjectProps(Ends(IID_IMailUser, IID_IDistList), hierarchy.Get(), 0, nullptr));
  EXPECT_EQ(S_OK, Target().FindAndCompare(Unicode(kText, ORV_W("new"))));
}

TEST_F(PropCopy, CopyToLeavesTheExcludedOut) {
  EXPECT_EQ(S_OK, CopyObject(Ends(IID_IMAPIProp, IID_IMAPIProp), Tags{kText}.Get(), MAPI_UNICODE, nullptr));
  EXPECT_EQ(S_OK, Target().FindAndCompare(Long(kNumber, 1)));
  EXPECT_EQ(S_OK, Target().FindAndCompare(Unicode(kText, ORV_W("old"))));
}

class ContainerCopying : public testing::Test {
 protected:
  // Two entries, a list of one of them in a list that holds itself, a container with an entry and, below it,
  // the container that is copied from.
  ContainerCopying() {
    book_.Make("a", MAPI_MAILUSER);
    book_.Make("b", MAPI_MAILUSER);
    book_.Make("inner", MAPI_DISTLIST, {"b", "outer"});
    book_.Make("outer", MAPI_DISTLIST, {"inner", "a"});
    book_.Make("sub", MAPI_ABCONT, {"b", "from", "to"});
    book_.Make("from", MAPI_ABCONT, {"outer", "a", "sub"});
    book_.Make("to", MAPI_ABCONT);
  }
  HRESULT Copy(std::initializer_list<ULONG> tags) {
    return CopyObjectProps(
        {&IID_IABContainer, book_["from"].Unknown(), &IID_IABContainer, book_["to"].Unknown()},
        Tags(tags).Get(), 0, nullptr);
  }
  Book book_;
};

TEST_F(ContainerCopying, IsDepthFirstAndEntersNothingTwice) {
  ASSERT_EQ(S_OK, Copy({PR_CONTAINER_CONTENTS, PR_CONTAINER_HIERARCHY}));
  const std::vector<std::string> expected = {
      "create outer in to", "save +outer", "create inner in +outer", "save +inner",
      "create b in +inner", "save +b",     "create a in +outer",     "save +a",
      "create a in to",     "save +a",     "create sub in to",       "save +sub",
      "create b in +sub",   "save +b"};
  EXPECT_EQ(expected, book_.log);
  EXPECT_EQ(S_OK, book_["+a"].Stored().FindAndCompare(String8(PR_DISPLAY_NAME_A, "a")));
}

TEST_F(ContainerCopying, TheTagsSayWhatIsWalked) {
  ASSERT_EQ(S_OK, Copy({PR_CONTAINER_HIERARCHY}));
  EXPECT_EQ((std::vector<std::string>{"create sub in to", "save +sub"}), book_.log);
  book_.log.clear();
  // Of the list copied into one of its own members only what is not that member.
  ASSERT_EQ(S_OK, CopyObjectProps(
                      {&IID_IDistList, book_["outer"].Unknown(), &IID_IDistList, book_["inner"].Unknown()},
                      Tags{PR_CONTAINER_CONTENTS, PR_CONTAINER_HIERARCHY}.Get(), 0, nullptr));
  EXPECT_EQ((std::vector<std::string>{"create a in inner", "save +a"}), book_.log);
}

TEST_F(ContainerCopying, WhatWasMadeIsNotEnteredEither) {
  book_["sub"].children = {};
  book_.mirror = "sub";
  ASSERT_EQ(S_OK, Copy({PR_CONTAINER_CONTENTS, PR_CONTAINER_HIERARCHY}));
  EXPECT_EQ(0, std::count(book_.log.begin(), book_.log.end(), "create +outer in +sub"));
  // Both copies of the entry show there, and entries are copied wherever they show.
  EXPECT_EQ(2, std::count(book_.log.begin(), book_.log.end(), "create +a in +sub"));
}

TEST_F(ContainerCopying, TheFirstFailureEndsIt) {
  book_.failing = "b";
  EXPECT_EQ(MAPI_E_NO_ACCESS, Copy({PR_CONTAINER_CONTENTS}));
  EXPECT_EQ("save +inner", book_.log.back());
}

TEST_F(ContainerCopying, DepthIsNoLimit) {
  constexpr int kDepth = 20000;
  for (int i = 0; i < kDepth; ++i) book_.Make(std::to_string(i), MAPI_DISTLIST, {std::to_string(i + 1)});
  book_.Make(std::to_string(kDepth), MAPI_MAILUSER);
  book_["from"].children = {"0"};
  ASSERT_EQ(S_OK, Copy({PR_CONTAINER_CONTENTS}));
  EXPECT_EQ(2u * (kDepth + 1), book_.log.size());
}

}  // namespace
}  // namespace orv::test
