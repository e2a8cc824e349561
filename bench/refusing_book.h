// An address book that refuses everything: what a provider of a benchmark is made from.
#pragma once

#include "orv/orvapi.h"
#include "props/base_prop.h"

namespace orv::bench {

class RefusingBook : public PropObject<IAddrBook> {
 public:
  HRESULT STDMETHODCALLTYPE OpenEntry(ULONG, LPENTRYID, LPCIID, ULONG, ULONG*, LPUNKNOWN*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE PrepareRecips(ULONG, LPSPropTagArray, LPADRLIST) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG, ULONG*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE Advise(ULONG, LPENTRYID, ULONG, LPMAPIADVISESINK, ULONG*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE Unadvise(ULONG) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE CreateOneOff(LPWSTR, LPWSTR, LPWSTR, ULONG, ULONG*, LPENTRYID*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE NewEntry(ULONG_PTR, ULONG, ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG*,
                                     LPENTRYID*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE ResolveName(ULONG_PTR, ULONG, LPWSTR, LPADRLIST) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE Address(ULONG_PTR*, LPADRPARM, LPADRLIST*) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE Details(ULONG_PTR*, LPFNDISMISS, LPVOID, ULONG, LPENTRYID, LPFNBUTTON, LPVOID,
                                    LPWSTR, ULONG) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE RecipOptions(ULONG_PTR, ULONG, LPADRENTRY) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE QueryDefaultRecipOpt(LPWSTR, ULONG, ULONG*, LPSPropValue*) override {
    return MAPI_E_NO_SUPPORT;
  }
  HRESULT STDMETHODCALLTYPE GetPAB(ULONG*, LPENTRYID*) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE SetPAB(ULONG, LPENTRYID) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE GetDefaultDir(ULONG*, LPENTRYID*) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE SetDefaultDir(ULONG, LPENTRYID) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE GetSearchPath(ULONG, LPSRowSet*) override { return MAPI_E_NO_SUPPORT; }
  HRESULT STDMETHODCALLTYPE SetSearchPath(ULONG, LPSRowSet) override { return MAPI_E_NO_SUPPORT; }

 private:
  bool Supports(REFIID) const override { return false; }
};

}  // namespace orv::bench
