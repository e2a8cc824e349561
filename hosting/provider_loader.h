// Brings the providers of a profile up at logon.
#pragma once

#include <utility>

#include "hosting/provider_list.h"
#include "orv/orvapi.h"
#include "platform/com_ptr.h"

namespace orv {

// Owner of the loaded providers: whoever holds it last unloads them, newest first, whether or not a provider
// still holds the list.
class LoadedProviders {
 public:
  LoadedProviders() noexcept = default;
  explicit LoadedProviders(ComPtr<CABServiceList> list) noexcept : list_(std::move(list)) {}
  LoadedProviders(LoadedProviders&&) noexcept = default;
  LoadedProviders& operator=(LoadedProviders&& other) noexcept {
    std::swap(list_, other.list_);
    return *this;
  }
  ~LoadedProviders() {
    if (list_) list_->UnloadAll();
  }

  CABServiceList* Get() const noexcept { return list_.Get(); }

 private:
  ComPtr<CABServiceList> list_;
};

// Loads, opens and adds the provider of every service, in table order, so that the list ends up newest first. The
// first failure ends it: every provider is then unloaded again. Exceptions of providers pass through, leaving the
// list to its owner.
HRESULT LoadProviders(IABServiceAdmin* admin, CABServiceList* list, ULONG_PTR uiParam, ULONG flags);

}  // namespace orv
