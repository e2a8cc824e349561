// File boxes are components, which want the thread that shows them to be an apartment.
#pragma once

#include <objbase.h>

namespace orvctl {

class Apartment {
 public:
  Apartment() : result_(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
  ~Apartment() {
    if (SUCCEEDED(result_)) CoUninitialize();
  }
  Apartment(const Apartment&) = delete;
  Apartment& operator=(const Apartment&) = delete;

 private:
  HRESULT result_;
};

}  // namespace orvctl
