// The contract of GetProps and QueryInterface, on entries and containers alike.
#include <algorithm>
#include <set>

#include "tools/orvctl/check/tour.h"

namespace orvctl::check {
namespace {

constexpr GUID kUnknownInterface = {
    0x5D1C1E2F, 0x7733, 0x4A11, {0x9C, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07}};

// Runs `look` on every object of the tour, each by a name that people can find it by.
template <class Look>
Verdict OnEach(Probe& probe, Look look) {
  const Stage stage(probe);
  const Tour tour(stage);
  const std::vector<Found> all = tour.Everything();
  for (const Found& each : all) {
    const Opened opened = RequireOpen(probe, stage.book(), each.id);
    look(opened, "'" + ToUtf8(each.name) + "': ");
  }
  return Ok(Count(all.size(), "object"));
}

Tags TagsOf(const Answer& answer) {
  Tags tags;
  for (const SPropValue& each : answer.view()) tags.push_back(each.ulPropTag);
  return tags;
}

Tags AllTags(Probe& probe, const Opened& opened, const std::string& who) {
  const Answer all = GetProps(probe, opened.props().Get(), nullptr);
  Require(SUCCEEDED(all.result), who + "GetProps without tags answered " + Name(all.result));
  return TagsOf(all);
}

Verdict CheckOrder(Probe& probe) {
  return OnEach(probe, [&](const Opened& opened, const std::string& who) {
    const Tags stored = AllTags(probe, opened, who);
    // Backwards, and asked for by types that the object does not have.
    Tags asked(stored.rbegin(), stored.rend());
    for (size_t i = 0; i < asked.size(); ++i)
      asked[i] = CHANGE_PROP_TYPE(asked[i], i % 2 == 0 ? PT_UNSPECIFIED : PT_LONG);
    if (asked.empty()) return;
    const Answer answer = RequireProps(probe, opened.props().Get(), asked);
    for (size_t i = 0; i < asked.size(); ++i) {
      const ULONG wanted = stored[stored.size() - 1 - i], given = answer.values.Get()[i].ulPropTag;
      Require(wanted == given,
              who + "in the place of " + diag::PropTagName(wanted) + " is " + diag::PropTagName(given));
    }
  });
}

Verdict CheckMissing(Probe& probe) {
  return OnEach(probe, [&](const Opened& opened, const std::string& who) {
    const Answer answer =
        RequireProps(probe, opened.props().Get(), {PR_ENTRYID, kUnknownTag, PR_OBJECT_TYPE});
    const SPropValue& missing = answer.values.Get()[1];
    Require(missing.ulPropTag == CHANGE_PROP_TYPE(kUnknownTag, PT_ERROR),
            who + "one that cannot be there came as " + diag::PropTagName(missing.ulPropTag));
    Require(missing.Value.err == MAPI_E_NOT_FOUND,
            who + "one that cannot be there has the error " + Name(missing.Value.err));
    Require(answer.result == MAPI_W_ERRORS_RETURNED,
            who + "with one missing the result was " + Name(answer.result));
  });
}

Verdict CheckNullTag(Probe& probe) {
  return OnEach(probe, [&](const Opened& opened, const std::string& who) {
    const Answer answer = RequireProps(probe, opened.props().Get(), {PR_NULL, PR_OBJECT_TYPE, PR_NULL});
    const SPropValue* values = answer.values.Get();
    Require(values[0].ulPropTag == PR_NULL && values[2].ulPropTag == PR_NULL,
            who + "in the place of PR_NULL is " +
                diag::PropTagName(values[values[0].ulPropTag == PR_NULL ? 2 : 0].ulPropTag));
    Require(values[1].ulPropTag == PR_OBJECT_TYPE,
            who + "behind PR_NULL is " + diag::PropTagName(values[1].ulPropTag));
  });
}

Verdict CheckUnicode(Probe& probe) {
  return OnEach(probe, [&](const Opened& opened, const std::string& who) {
    const Tags tags = {PR_DISPLAY_NAME_W};
    const Answer answer = GetProps(probe, opened.props().Get(), &tags, 0);
    Require(answer.result == MAPI_E_BAD_CHARWIDTH,
            who + "GetProps without it answered " + Name(answer.result));
    Buffer<SPropTagArray> list(Ledger::FreeRoot);
    const HRESULT result =
        probe.Call("IMAPIProp::GetPropList", [&] { return opened.props()->GetPropList(0, list.Put()); });
    if (FAILED(result)) static_cast<void>(list.Detach());
    Require(result == MAPI_E_BAD_CHARWIDTH || result == MAPI_E_NO_SUPPORT,
            who + "GetPropList without it answered " + Name(result));
  });
}

std::set<ULONG> Identifiers(const Tags& tags) {
  std::set<ULONG> ids;
  for (const ULONG each : tags) ids.insert(PROP_ID(each));
  return ids;
}

Verdict CheckAll(Probe& probe) {
  return OnEach(probe, [&](const Opened& opened, const std::string& who) {
    Buffer<SPropTagArray> list(Ledger::FreeRoot);
    const HRESULT result = probe.Call("IMAPIProp::GetPropList",
                                      [&] { return opened.props()->GetPropList(MAPI_UNICODE, list.Put()); });
    if (FAILED(result)) static_cast<void>(list.Detach());
    if (result == MAPI_E_NO_SUPPORT) NotOffered("GetPropList is not offered");
    Require(SUCCEEDED(result) && list, who + "GetPropList answered " + Name(result));
    const std::set<ULONG> listed = Identifiers(orv::sdk::TagsOf(*list.Get())),
                          given = Identifiers(AllTags(probe, opened, who));
    Require(listed == given, who + "GetPropList names " + Count(listed.size(), "property", "properties") +
                                 ", GetProps answers " + std::to_string(given.size()) + ", and not the same");
  });
}

Verdict CheckArguments(Probe& probe) {
  return OnEach(probe, [&](const Opened& opened, const std::string& who) {
    const ComPtr<IMAPIProp> object = opened.props();
    TagList tags({PR_DISPLAY_NAME_W}), none({});
    ULONG count = 0;
    Buffer<SPropValue> values(Ledger::FreeRoot);
    const auto refuse = [&](const char* what, HRESULT result) {
      if (FAILED(result)) static_cast<void>(values.Detach());
      Require(result == MAPI_E_INVALID_PARAMETER, who + what + " answered " + Name(result));
    };
    refuse("GetProps with a null count", probe.Call("IMAPIProp::GetProps with a null count", [&] {
      return object->GetProps(tags.Get(), MAPI_UNICODE, nullptr, values.Put());
    }));
    refuse("GetProps with null values", probe.Call("IMAPIProp::GetProps with null values", [&] {
      return object->GetProps(tags.Get(), MAPI_UNICODE, &count, nullptr);
    }));
    refuse("GetProps of no tags", probe.Call("IMAPIProp::GetProps of no tags", [&] {
      return object->GetProps(none.Get(), MAPI_UNICODE, &count, values.Put());
    }));
  });
}

// What a client sees of an entry before it opens it.
void RequireInRows(Probe& probe) {
  const Stage stage(probe);
  const Tour tour(stage);
  for (const ULONG tag : kEntryColumns) tour.RequireColumn(tag);
}

Verdict CheckRequired(Probe& probe) {
  RequireInRows(probe);
  std::string advice;
  const Verdict verdict = OnEach(probe, [&](const Opened& opened, const std::string& who) {
    const Answer answer =
        RequireProps(probe, opened.props().Get(),
                     {PR_ENTRYID, PR_OBJECT_TYPE, PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W});
    for (const ULONG tag : kEntryColumns)
      Require(answer.view().Find(tag) != nullptr, who + "it has no " + diag::PropTagName(tag));
    Require(answer.view().Number(PR_OBJECT_TYPE) == opened.type,
            who + "PR_OBJECT_TYPE is not what OpenEntry says");
    const bool isAddressed = answer.view().Find(PR_ADDRTYPE_W) != nullptr;
    if (opened.type == MAPI_MAILUSER && !isAddressed) advice = who + "a mail user without PR_ADDRTYPE";
  });
  return advice.empty() ? verdict : Advice(advice);
}

void RequireInterface(Probe& probe, const Opened& opened, const GUID& iid, const std::string& who) {
  ComPtr<IUnknown> other;
  const HRESULT result = probe.Call("QueryInterface", [&] {
    return opened.object->QueryInterface(iid, reinterpret_cast<void**>(other.Put()));
  });
  if (FAILED(result)) static_cast<void>(other.Detach());
  Require(SUCCEEDED(result) && other, who + "QueryInterface of its own interfaces answered " + Name(result));
}

Verdict CheckInterfaces(Probe& probe) {
  return OnEach(probe, [&](const Opened& opened, const std::string& who) {
    RequireInterface(probe, opened, IID_IUnknown, who);
    RequireInterface(probe, opened, IID_IMAPIProp, who);
    const bool isUser = opened.type == MAPI_MAILUSER, isList = opened.type == MAPI_DISTLIST;
    RequireInterface(probe, opened, isUser ? IID_IMailUser : isList ? IID_IDistList : IID_IABContainer, who);
    if (!isUser) RequireInterface(probe, opened, IID_IMAPIContainer, who);
    void* other = opened.object.Get();
    const HRESULT result = probe.Call(
        "QueryInterface", [&] { return opened.object->QueryInterface(kUnknownInterface, &other); });
    Require(result == MAPI_E_INTERFACE_NOT_SUPPORTED,
            who + "QueryInterface of an unknown one answered " + Name(result));
    Require(other == nullptr, who + "QueryInterface of an unknown one does not clear what it hands out");
  });
}

constexpr NamedCheck kPropChecks[] = {
    {"props.order", CheckOrder},       {"props.missing", CheckMissing},
    {"props.null-tag", CheckNullTag},  {"props.unicode", CheckUnicode},
    {"props.all", CheckAll},           {"props.arguments", CheckArguments},
    {"props.required", CheckRequired}, {"props.interfaces", CheckInterfaces}};

}  // namespace

std::span<const NamedCheck> PropertyChecks() { return kPropChecks; }

}  // namespace orvctl::check
