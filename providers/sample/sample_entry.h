// What the provider object, mail users, distribution lists and containers have in common: read-only properties.
// The copy services are the library's, reached through the support object.
#pragma once

#include <algorithm>

#include "sample_book.h"

namespace sample {

// `Bases` are the interfaces between the object's own and IMAPIProp.
template <class Interface, class... Bases>
class Entry : public orv::sdk::RefusingProp<Interface, IMAPIProp, Bases...> {
 public:
  Entry(BookPtr book, Properties properties) : book_(std::move(book)), properties_(std::move(properties)) {}

  HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG flags, ULONG* count,
                                     LPSPropValue* values) override {
    if (count == nullptr || values == nullptr) return MAPI_E_INVALID_PARAMETER;
    if ((flags & MAPI_UNICODE) == 0) return MAPI_E_BAD_CHARWIDTH;
    if (tags != nullptr && tags->cValues == 0) return MAPI_E_INVALID_PARAMETER;
    return Guarded([&] {
      const Tags wanted = tags != nullptr ? TagsOf(*tags) : TagsOf(properties_);
      Allocator::Root copy = CopyValues(book_->allocator(), properties_, wanted);
      const auto isMissing = [this](ULONG tag) { return tag != PR_NULL && !FindProperty(properties_, tag); };
      *count = static_cast<ULONG>(wanted.size());
      *values = static_cast<LPSPropValue>(copy.release());
      return std::any_of(wanted.begin(), wanted.end(), isMissing) ? MAPI_W_ERRORS_RETURNED : S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE GetPropList(ULONG flags, LPSPropTagArray* tags) override {
    if (tags == nullptr) return MAPI_E_INVALID_PARAMETER;
    if ((flags & MAPI_UNICODE) == 0) return MAPI_E_BAD_CHARWIDTH;
    return Guarded([&] {
      *tags = static_cast<LPSPropTagArray>(book_->allocator().CopyTags(TagsOf(properties_)).release());
      return S_OK;
    });
  }

  HRESULT STDMETHODCALLTYPE CopyTo(ULONG count, LPCIID interfaces, LPSPropTagArray exclude, ULONG_PTR ui,
                                   LPMAPIPROGRESS progress, LPCIID iid, LPVOID target, ULONG flags,
                                   LPSPropProblemArray* problems) override {
    return Guarded([&] {
      return book_->support()->DoCopyTo(&orv::sdk::kIidOf<Interface>, this, count, interfaces, exclude, ui,
                                        progress, iid, target, flags, problems);
    });
  }

  HRESULT STDMETHODCALLTYPE CopyProps(LPSPropTagArray include, ULONG_PTR ui, LPMAPIPROGRESS progress,
                                      LPCIID iid, LPVOID target, ULONG flags,
                                      LPSPropProblemArray* problems) override {
    return Guarded([&] {
      return book_->support()->DoCopyProps(&orv::sdk::kIidOf<Interface>, this, include, ui, progress, iid,
                                           target, flags, problems);
    });
  }

  ORV_REFUSE(SaveChanges, MAPI_E_NO_ACCESS, ULONG)
  ORV_REFUSE(SetProps, MAPI_E_NO_ACCESS, ULONG, LPSPropValue, LPSPropProblemArray*)
  ORV_REFUSE(DeleteProps, MAPI_E_NO_ACCESS, LPSPropTagArray, LPSPropProblemArray*)

 protected:
  const BookPtr book_;
  const Properties properties_;
};

// Opens any entry of the book, for the provider object and for its containers alike; null is the root.
HRESULT OpenBookEntry(const BookPtr& book, ULONG size, const ENTRYID* id, LPCIID iid, ULONG flags,
                      ULONG* type, LPUNKNOWN* object);

}  // namespace sample
