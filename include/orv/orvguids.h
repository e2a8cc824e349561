/*
 * Interface identifiers, each {000203xx-0000-0000-C000-000000000046}, and the library's own MAPIUID.
 *
 * IID_IUnknown is the system's. Constants are private to each source file, so nothing has to be linked for
 * them.
 */
#ifndef ORV_ORVGUIDS_H
#define ORV_ORVGUIDS_H

#include <windows.h>

#include <unknwn.h>

/* Defines the identifier whose first part is `data1`; unused ones raise no warning. */
#ifdef __cplusplus
#define ORV_DEFINE_IID(name, data1) static constexpr GUID name = {data1, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}}
#elif defined(__GNUC__)
#define ORV_DEFINE_IID(name, data1) \
  static const GUID name __attribute__((unused)) = {data1, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}}
#else
#define ORV_DEFINE_IID(name, data1) static const GUID name = {data1, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}}
#endif

/* Published */
ORV_DEFINE_IID(IID_IMAPITable, 0x00020301);
ORV_DEFINE_IID(IID_IMAPIAdviseSink, 0x00020302);
ORV_DEFINE_IID(IID_IMAPIProp, 0x00020303);
ORV_DEFINE_IID(IID_IProfSect, 0x00020304);
ORV_DEFINE_IID(IID_IAddrBook, 0x00020309);
ORV_DEFINE_IID(IID_IMailUser, 0x0002030A);
ORV_DEFINE_IID(IID_IMAPIContainer, 0x0002030B);
ORV_DEFINE_IID(IID_IABContainer, 0x0002030D);
ORV_DEFINE_IID(IID_IDistList, 0x0002030E);
ORV_DEFINE_IID(IID_IMAPIProgress, 0x0002031F);

/* Published: property sets of named properties */
ORV_DEFINE_IID(PS_MAPI, 0x00020328);
ORV_DEFINE_IID(PS_PUBLIC_STRINGS, 0x00020329);

/* Ours */
ORV_DEFINE_IID(IID_IOrvSession, 0x000203A0);
ORV_DEFINE_IID(IID_IOrvSupport, 0x000203A1);
ORV_DEFINE_IID(IID_IOrvProfAdmin, 0x000203A2);
ORV_DEFINE_IID(IID_IABServiceAdmin, 0x000203A3);
ORV_DEFINE_IID(IID_IOrvProfAdmin2, 0x000203A4);
ORV_DEFINE_IID(IID_IOrvSupport2, 0x000203A5);
ORV_DEFINE_IID(IID_IOrvSession2, 0x000203A6);
ORV_DEFINE_IID(IID_IOrvProfAdmin3, 0x000203A7);

/*
 * Ours: the MAPIUID of the library itself, {3F2BF580-E91B-11D2-9168-00C04F8CAA0E}, as an initialiser of
 * sixteen bytes. Behind four zero bytes it is the session's entry identifier and that of the user information
 * mail user.
 */
#define ORV_USER_INFO_UID_BYTES \
  0x80, 0xF5, 0x2B, 0x3F, 0x1B, 0xE9, 0xD2, 0x11, 0x91, 0x68, 0x00, 0xC0, 0x4F, 0x8C, 0xAA, 0x0E

#endif
