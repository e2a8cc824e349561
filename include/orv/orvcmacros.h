/*
 * Calls of methods in C: IAddrBook_OpenEntry(book, ...) stands for book->lpVtbl->OpenEntry(book, ...). Defined where
 * COBJMACROS is and interfaces are tables. Generated from the declarations.
 */
#ifndef ORV_ORVCMACROS_H
#define ORV_ORVCMACROS_H

#if defined(COBJMACROS) && (!defined(__cplusplus) || defined(CINTERFACE))
/* clang-format off */

/* IMAPIProp */
#define IMAPIProp_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IMAPIProp_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IMAPIProp_Release(This) (This)->lpVtbl->Release(This)
#define IMAPIProp_GetLastError(This, hResult, ulFlags, lppMAPIError) (This)->lpVtbl->GetLastError(This, \
  hResult, ulFlags, lppMAPIError)
#define IMAPIProp_SaveChanges(This, ulFlags) (This)->lpVtbl->SaveChanges(This, ulFlags)
#define IMAPIProp_GetProps(This, lpPropTagArray, ulFlags, lpcValues, lppPropArray) \
  (This)->lpVtbl->GetProps(This, lpPropTagArray, ulFlags, lpcValues, lppPropArray)
#define IMAPIProp_GetPropList(This, ulFlags, lppPropTagArray) (This)->lpVtbl->GetPropList(This, ulFlags, \
  lppPropTagArray)
#define IMAPIProp_OpenProperty(This, ulPropTag, lpiid, ulInterfaceOptions, ulFlags, lppUnk) \
  (This)->lpVtbl->OpenProperty(This, ulPropTag, lpiid, ulInterfaceOptions, ulFlags, lppUnk)
#define IMAPIProp_SetProps(This, cValues, lpPropArray, lppProblems) (This)->lpVtbl->SetProps(This, cValues, \
  lpPropArray, lppProblems)
#define IMAPIProp_DeleteProps(This, lpPropTagArray, lppProblems) (This)->lpVtbl->DeleteProps(This, \
  lpPropTagArray, lppProblems)
#define IMAPIProp_CopyTo(This, ciidExclude, rgiidExclude, lpExcludeProps, ulUIParam, lpProgress, \
  lpInterface, lpDestObj, ulFlags, lppProblems) (This)->lpVtbl->CopyTo(This, ciidExclude, rgiidExclude, \
  lpExcludeProps, ulUIParam, lpProgress, lpInterface, lpDestObj, ulFlags, lppProblems)
#define IMAPIProp_CopyProps(This, lpIncludeProps, ulUIParam, lpProgress, lpInterface, lpDestObj, ulFlags, \
  lppProblems) (This)->lpVtbl->CopyProps(This, lpIncludeProps, ulUIParam, lpProgress, lpInterface, \
  lpDestObj, ulFlags, lppProblems)
#define IMAPIProp_GetNamesFromIDs(This, lppPropTags, lpPropSetGuid, ulFlags, lpcPropNames, lpppPropNames) \
  (This)->lpVtbl->GetNamesFromIDs(This, lppPropTags, lpPropSetGuid, ulFlags, lpcPropNames, lpppPropNames)
#define IMAPIProp_GetIDsFromNames(This, cPropNames, lppPropNames, ulFlags, lppPropTags) \
  (This)->lpVtbl->GetIDsFromNames(This, cPropNames, lppPropNames, ulFlags, lppPropTags)

/* IProfSect */
#define IProfSect_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IProfSect_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IProfSect_Release(This) (This)->lpVtbl->Release(This)
#define IProfSect_GetLastError(This, hResult, ulFlags, lppMAPIError) (This)->lpVtbl->GetLastError(This, \
  hResult, ulFlags, lppMAPIError)
#define IProfSect_SaveChanges(This, ulFlags) (This)->lpVtbl->SaveChanges(This, ulFlags)
#define IProfSect_GetProps(This, lpPropTagArray, ulFlags, lpcValues, lppPropArray) \
  (This)->lpVtbl->GetProps(This, lpPropTagArray, ulFlags, lpcValues, lppPropArray)
#define IProfSect_GetPropList(This, ulFlags, lppPropTagArray) (This)->lpVtbl->GetPropList(This, ulFlags, \
  lppPropTagArray)
#define IProfSect_OpenProperty(This, ulPropTag, lpiid, ulInterfaceOptions, ulFlags, lppUnk) \
  (This)->lpVtbl->OpenProperty(This, ulPropTag, lpiid, ulInterfaceOptions, ulFlags, lppUnk)
#define IProfSect_SetProps(This, cValues, lpPropArray, lppProblems) (This)->lpVtbl->SetProps(This, cValues, \
  lpPropArray, lppProblems)
#define IProfSect_DeleteProps(This, lpPropTagArray, lppProblems) (This)->lpVtbl->DeleteProps(This, \
  lpPropTagArray, lppProblems)
#define IProfSect_CopyTo(This, ciidExclude, rgiidExclude, lpExcludeProps, ulUIParam, lpProgress, \
  lpInterface, lpDestObj, ulFlags, lppProblems) (This)->lpVtbl->CopyTo(This, ciidExclude, rgiidExclude, \
  lpExcludeProps, ulUIParam, lpProgress, lpInterface, lpDestObj, ulFlags, lppProblems)
#define IProfSect_CopyProps(This, lpIncludeProps, ulUIParam, lpProgress, lpInterface, lpDestObj, ulFlags, \
  lppProblems) (This)->lpVtbl->CopyProps(This, lpIncludeProps, ulUIParam, lpProgress, lpInterface, \
  lpDestObj, ulFlags, lppProblems)
#define IProfSect_GetNamesFromIDs(This, lppPropTags, lpPropSetGuid, ulFlags, lpcPropNames, lpppPropNames) \
  (This)->lpVtbl->GetNamesFromIDs(This, lppPropTags, lpPropSetGuid, ulFlags, lpcPropNames, lpppPropNames)
#define IProfSect_GetIDsFromNames(This, cPropNames, lppPropNames, ulFlags, lppPropTags) \
  (This)->lpVtbl->GetIDsFromNames(This, cPropNames, lppPropNames, ulFlags, lppPropTags)

/* IMailUser */
#define IMailUser_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IMailUser_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IMailUser_Release(This) (This)->lpVtbl->Release(This)
#define IMailUser_GetLastError(This, hResult, ulFlags, lppMAPIError) (This)->lpVtbl->GetLastError(This, \
  hResult, ulFlags, lppMAPIError)
#define IMailUser_SaveChanges(This, ulFlags) (This)->lpVtbl->SaveChanges(This, ulFlags)
#define IMailUser_GetProps(This, lpPropTagArray, ulFlags, lpcValues, lppPropArray) \
  (This)->lpVtbl->GetProps(This, lpPropTagArray, ulFlags, lpcValues, lppPropArray)
#define IMailUser_GetPropList(This, ulFlags, lppPropTagArray) (This)->lpVtbl->GetPropList(This, ulFlags, \
  lppPropTagArray)
#define IMailUser_OpenProperty(This, ulPropTag, lpiid, ulInterfaceOptions, ulFlags, lppUnk) \
  (This)->lpVtbl->OpenProperty(This, ulPropTag, lpiid, ulInterfaceOptions, ulFlags, lppUnk)
#define IMailUser_SetProps(This, cValues, lpPropArray, lppProblems) (This)->lpVtbl->SetProps(This, cValues, \
  lpPropArray, lppProblems)
#define IMailUser_DeleteProps(This, lpPropTagArray, lppProblems) (This)->lpVtbl->DeleteProps(This, \
  lpPropTagArray, lppProblems)
#define IMailUser_CopyTo(This, ciidExclude, rgiidExclude, lpExcludeProps, ulUIParam, lpProgress, \
  lpInterface, lpDestObj, ulFlags, lppProblems) (This)->lpVtbl->CopyTo(This, ciidExclude, rgiidExclude, \
  lpExcludeProps, ulUIParam, lpProgress, lpInterface, lpDestObj, ulFlags, lppProblems)
#define IMailUser_CopyProps(This, lpIncludeProps, ulUIParam, lpProgress, lpInterface, lpDestObj, ulFlags, \
  lppProblems) (This)->lpVtbl->CopyProps(This, lpIncludeProps, ulUIParam, lpProgress, lpInterface, \
  lpDestObj, ulFlags, lppProblems)
#define IMailUser_GetNamesFromIDs(This, lppPropTags, lpPropSetGuid, ulFlags, lpcPropNames, lpppPropNames) \
  (This)->lpVtbl->GetNamesFromIDs(This, lppPropTags, lpPropSetGuid, ulFlags, lpcPropNames, lpppPropNames)
#define IMailUser_GetIDsFromNames(This, cPropNames, lppPropNames, ulFlags, lppPropTags) \
  (This)->lpVtbl->GetIDsFromNames(This, cPropNames, lppPropNames, ulFlags, lppPropTags)

/* IMAPIContainer */
#define IMAPIContainer_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IMAPIContainer_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IMAPIContainer_Release(This) (This)->lpVtbl->Release(This)
#define IMAPIContainer_GetLastError(This, hResult, ulFlags, lppMAPIError) (This)->lpVtbl->GetLastError(This, \
  hResult, ulFlags, lppMAPIError)
#define IMAPIContainer_SaveChanges(This, ulFlags) (This)->lpVtbl->SaveChanges(This, ulFlags)
#define IMAPIContainer_GetProps(This, lpPropTagArray, ulFlags, lpcValues, lppPropArray) \
  (This)->lpVtbl->GetProps(This, lpPropTagArray, ulFlags, lpcValues, lppPropArray)
#define IMAPIContainer_GetPropList(This, ulFlags, lppPropTagArray) (This)->lpVtbl->GetPropList(This, \
  ulFlags, lppPropTagArray)
#define IMAPIContainer_OpenProperty(This, ulPropTag, lpiid, ulInterfaceOptions, ulFlags, lppUnk) \
  (This)->lpVtbl->OpenProperty(This, ulPropTag, lpiid, ulInterfaceOptions, ulFlags, lppUnk)
#define IMAPIContainer_SetProps(This, cValues, lpPropArray, lppProblems) (This)->lpVtbl->SetProps(This, \
  cValues, lpPropArray, lppProblems)
#define IMAPIContainer_DeleteProps(This, lpPropTagArray, lppProblems) (This)->lpVtbl->DeleteProps(This, \
  lpPropTagArray, lppProblems)
#define IMAPIContainer_CopyTo(This, ciidExclude, rgiidExclude, lpExcludeProps, ulUIParam, lpProgress, \
  lpInterface, lpDestObj, ulFlags, lppProblems) (This)->lpVtbl->CopyTo(This, ciidExclude, rgiidExclude, \
  lpExcludeProps, ulUIParam, lpProgress, lpInterface, lpDestObj, ulFlags, lppProblems)
#define IMAPIContainer_CopyProps(This, lpIncludeProps, ulUIParam, lpProgress, lpInterface, lpDestObj, \
  ulFlags, lppProblems) (This)->lpVtbl->CopyProps(This, lpIncludeProps, ulUIParam, lpProgress, lpInterface, \
  lpDestObj, ulFlags, lppProblems)
#define IMAPIContainer_GetNamesFromIDs(This, lppPropTags, lpPropSetGuid, ulFlags, lpcPropNames, \
  lpppPropNames) (This)->lpVtbl->GetNamesFromIDs(This, lppPropTags, lpPropSetGuid, ulFlags, lpcPropNames, \
  lpppPropNames)
#define IMAPIContainer_GetIDsFromNames(This, cPropNames, lppPropNames, ulFlags, lppPropTags) \
  (This)->lpVtbl->GetIDsFromNames(This, cPropNames, lppPropNames, ulFlags, lppPropTags)
#define IMAPIContainer_GetContentsTable(This, ulFlags, lppTable) (This)->lpVtbl->GetContentsTable(This, \
  ulFlags, lppTable)
#define IMAPIContainer_GetHierarchyTable(This, ulFlags, lppTable) (This)->lpVtbl->GetHierarchyTable(This, \
  ulFlags, lppTable)
#define IMAPIContainer_OpenEntry(This, cbEntryID, lpEntryID, lpInterface, ulFlags, lpulObjType, lppUnk) \
  (This)->lpVtbl->OpenEntry(This, cbEntryID, lpEntryID, lpInterface, ulFlags, lpulObjType, lppUnk)
#define IMAPIContainer_SetSearchCriteria(This, lpRestriction, lpContainerList, ulSearchFlags) \
  (This)->lpVtbl->SetSearchCriteria(This, lpRestriction, lpContainerList, ulSearchFlags)
#define IMAPIContainer_GetSearchCriteria(This, ulFlags, lppRestriction, lppContainerList, lpulSearchState) \
  (This)->lpVtbl->GetSearchCriteria(This, ulFlags, lppRestriction, lppContainerList, lpulSearchState)

/* IABContainer */
#define IABContainer_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IABContainer_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IABContainer_Release(This) (This)->lpVtbl->Release(This)
#define IABContainer_GetLastError(This, hResult, ulFlags, lppMAPIError) (This)->lpVtbl->GetLastError(This, \
  hResult, ulFlags, lppMAPIError)
#define IABContainer_SaveChanges(This, ulFlags) (This)->lpVtbl->SaveChanges(This, ulFlags)
#define IABContainer_GetProps(This, lpPropTagArray, ulFlags, lpcValues, lppPropArray) \
  (This)->lpVtbl->GetProps(This, lpPropTagArray, ulFlags, lpcValues, lppPropArray)
#define IABContainer_GetPropList(This, ulFlags, lppPropTagArray) (This)->lpVtbl->GetPropList(This, ulFlags, \
  lppPropTagArray)
#define IABContainer_OpenProperty(This, ulPropTag, lpiid, ulInterfaceOptions, ulFlags, lppUnk) \
  (This)->lpVtbl->OpenProperty(This, ulPropTag, lpiid, ulInterfaceOptions, ulFlags, lppUnk)
#define IABContainer_SetProps(This, cValues, lpPropArray, lppProblems) (This)->lpVtbl->SetProps(This, \
  cValues, lpPropArray, lppProblems)
#define IABContainer_DeleteProps(This, lpPropTagArray, lppProblems) (This)->lpVtbl->DeleteProps(This, \
  lpPropTagArray, lppProblems)
#define IABContainer_CopyTo(This, ciidExclude, rgiidExclude, lpExcludeProps, ulUIParam, lpProgress, \
  lpInterface, lpDestObj, ulFlags, lppProblems) (This)->lpVtbl->CopyTo(This, ciidExclude, rgiidExclude, \
  lpExcludeProps, ulUIParam, lpProgress, lpInterface, lpDestObj, ulFlags, lppProblems)
#define IABContainer_CopyProps(This, lpIncludeProps, ulUIParam, lpProgress, lpInterface, lpDestObj, ulFlags, \
  lppProblems) (This)->lpVtbl->CopyProps(This, lpIncludeProps, ulUIParam, lpProgress, lpInterface, \
  lpDestObj, ulFlags, lppProblems)
#define IABContainer_GetNamesFromIDs(This, lppPropTags, lpPropSetGuid, ulFlags, lpcPropNames, lpppPropNames) \
  (This)->lpVtbl->GetNamesFromIDs(This, lppPropTags, lpPropSetGuid, ulFlags, lpcPropNames, lpppPropNames)
#define IABContainer_GetIDsFromNames(This, cPropNames, lppPropNames, ulFlags, lppPropTags) \
  (This)->lpVtbl->GetIDsFromNames(This, cPropNames, lppPropNames, ulFlags, lppPropTags)
#define IABContainer_GetContentsTable(This, ulFlags, lppTable) (This)->lpVtbl->GetContentsTable(This, \
  ulFlags, lppTable)
#define IABContainer_GetHierarchyTable(This, ulFlags, lppTable) (This)->lpVtbl->GetHierarchyTable(This, \
  ulFlags, lppTable)
#define IABContainer_OpenEntry(This, cbEntryID, lpEntryID, lpInterface, ulFlags, lpulObjType, lppUnk) \
  (This)->lpVtbl->OpenEntry(This, cbEntryID, lpEntryID, lpInterface, ulFlags, lpulObjType, lppUnk)
#define IABContainer_SetSearchCriteria(This, lpRestriction, lpContainerList, ulSearchFlags) \
  (This)->lpVtbl->SetSearchCriteria(This, lpRestriction, lpContainerList, ulSearchFlags)
#define IABContainer_GetSearchCriteria(This, ulFlags, lppRestriction, lppContainerList, lpulSearchState) \
  (This)->lpVtbl->GetSearchCriteria(This, ulFlags, lppRestriction, lppContainerList, lpulSearchState)
#define IABContainer_CreateEntry(This, cbEntryID, lpEntryID, ulCreateFlags, lppMAPIPropEntry) \
  (This)->lpVtbl->CreateEntry(This, cbEntryID, lpEntryID, ulCreateFlags, lppMAPIPropEntry)
#define IABContainer_CopyEntries(This, lpEntries, ulUIParam, lpProgress, ulFlags) \
  (This)->lpVtbl->CopyEntries(This, lpEntries, ulUIParam, lpProgress, ulFlags)
#define IABContainer_DeleteEntries(This, lpEntries, ulFlags) (This)->lpVtbl->DeleteEntries(This, lpEntries, \
  ulFlags)
#define IABContainer_ResolveNames(This, lpPropTagArray, ulFlags, lpAdrList, lpFlagList) \
  (This)->lpVtbl->ResolveNames(This, lpPropTagArray, ulFlags, lpAdrList, lpFlagList)

/* IDistList */
#define IDistList_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IDistList_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IDistList_Release(This) (This)->lpVtbl->Release(This)
#define IDistList_GetLastError(This, hResult, ulFlags, lppMAPIError) (This)->lpVtbl->GetLastError(This, \
  hResult, ulFlags, lppMAPIError)
#define IDistList_SaveChanges(This, ulFlags) (This)->lpVtbl->SaveChanges(This, ulFlags)
#define IDistList_GetProps(This, lpPropTagArray, ulFlags, lpcValues, lppPropArray) \
  (This)->lpVtbl->GetProps(This, lpPropTagArray, ulFlags, lpcValues, lppPropArray)
#define IDistList_GetPropList(This, ulFlags, lppPropTagArray) (This)->lpVtbl->GetPropList(This, ulFlags, \
  lppPropTagArray)
#define IDistList_OpenProperty(This, ulPropTag, lpiid, ulInterfaceOptions, ulFlags, lppUnk) \
  (This)->lpVtbl->OpenProperty(This, ulPropTag, lpiid, ulInterfaceOptions, ulFlags, lppUnk)
#define IDistList_SetProps(This, cValues, lpPropArray, lppProblems) (This)->lpVtbl->SetProps(This, cValues, \
  lpPropArray, lppProblems)
#define IDistList_DeleteProps(This, lpPropTagArray, lppProblems) (This)->lpVtbl->DeleteProps(This, \
  lpPropTagArray, lppProblems)
#define IDistList_CopyTo(This, ciidExclude, rgiidExclude, lpExcludeProps, ulUIParam, lpProgress, \
  lpInterface, lpDestObj, ulFlags, lppProblems) (This)->lpVtbl->CopyTo(This, ciidExclude, rgiidExclude, \
  lpExcludeProps, ulUIParam, lpProgress, lpInterface, lpDestObj, ulFlags, lppProblems)
#define IDistList_CopyProps(This, lpIncludeProps, ulUIParam, lpProgress, lpInterface, lpDestObj, ulFlags, \
  lppProblems) (This)->lpVtbl->CopyProps(This, lpIncludeProps, ulUIParam, lpProgress, lpInterface, \
  lpDestObj, ulFlags, lppProblems)
#define IDistList_GetNamesFromIDs(This, lppPropTags, lpPropSetGuid, ulFlags, lpcPropNames, lpppPropNames) \
  (This)->lpVtbl->GetNamesFromIDs(This, lppPropTags, lpPropSetGuid, ulFlags, lpcPropNames, lpppPropNames)
#define IDistList_GetIDsFromNames(This, cPropNames, lppPropNames, ulFlags, lppPropTags) \
  (This)->lpVtbl->GetIDsFromNames(This, cPropNames, lppPropNames, ulFlags, lppPropTags)
#define IDistList_GetContentsTable(This, ulFlags, lppTable) (This)->lpVtbl->GetContentsTable(This, ulFlags, \
  lppTable)
#define IDistList_GetHierarchyTable(This, ulFlags, lppTable) (This)->lpVtbl->GetHierarchyTable(This, \
  ulFlags, lppTable)
#define IDistList_OpenEntry(This, cbEntryID, lpEntryID, lpInterface, ulFlags, lpulObjType, lppUnk) \
  (This)->lpVtbl->OpenEntry(This, cbEntryID, lpEntryID, lpInterface, ulFlags, lpulObjType, lppUnk)
#define IDistList_SetSearchCriteria(This, lpRestriction, lpContainerList, ulSearchFlags) \
  (This)->lpVtbl->SetSearchCriteria(This, lpRestriction, lpContainerList, ulSearchFlags)
#define IDistList_GetSearchCriteria(This, ulFlags, lppRestriction, lppContainerList, lpulSearchState) \
  (This)->lpVtbl->GetSearchCriteria(This, ulFlags, lppRestriction, lppContainerList, lpulSearchState)
#define IDistList_CreateEntry(This, cbEntryID, lpEntryID, ulCreateFlags, lppMAPIPropEntry) \
  (This)->lpVtbl->CreateEntry(This, cbEntryID, lpEntryID, ulCreateFlags, lppMAPIPropEntry)
#define IDistList_CopyEntries(This, lpEntries, ulUIParam, lpProgress, ulFlags) \
  (This)->lpVtbl->CopyEntries(This, lpEntries, ulUIParam, lpProgress, ulFlags)
#define IDistList_DeleteEntries(This, lpEntries, ulFlags) (This)->lpVtbl->DeleteEntries(This, lpEntries, \
  ulFlags)
#define IDistList_ResolveNames(This, lpPropTagArray, ulFlags, lpAdrList, lpFlagList) \
  (This)->lpVtbl->ResolveNames(This, lpPropTagArray, ulFlags, lpAdrList, lpFlagList)

/* IMAPITable */
#define IMAPITable_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IMAPITable_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IMAPITable_Release(This) (This)->lpVtbl->Release(This)
#define IMAPITable_GetLastError(This, hResult, ulFlags, lppMAPIError) (This)->lpVtbl->GetLastError(This, \
  hResult, ulFlags, lppMAPIError)
#define IMAPITable_Advise(This, ulEventMask, lpAdviseSink, lpulConnection) (This)->lpVtbl->Advise(This, \
  ulEventMask, lpAdviseSink, lpulConnection)
#define IMAPITable_Unadvise(This, ulConnection) (This)->lpVtbl->Unadvise(This, ulConnection)
#define IMAPITable_GetStatus(This, lpulTableStatus, lpulTableType) (This)->lpVtbl->GetStatus(This, \
  lpulTableStatus, lpulTableType)
#define IMAPITable_SetColumns(This, lpPropTagArray, ulFlags) (This)->lpVtbl->SetColumns(This, \
  lpPropTagArray, ulFlags)
#define IMAPITable_QueryColumns(This, ulFlags, lppPropTagArray) (This)->lpVtbl->QueryColumns(This, ulFlags, \
  lppPropTagArray)
#define IMAPITable_GetRowCount(This, ulFlags, lpulCount) (This)->lpVtbl->GetRowCount(This, ulFlags, \
  lpulCount)
#define IMAPITable_SeekRow(This, bkOrigin, lRowCount, lplRowsSought) (This)->lpVtbl->SeekRow(This, bkOrigin, \
  lRowCount, lplRowsSought)
#define IMAPITable_SeekRowApprox(This, ulNumerator, ulDenominator) (This)->lpVtbl->SeekRowApprox(This, \
  ulNumerator, ulDenominator)
#define IMAPITable_QueryPosition(This, lpulRow, lpulNumerator, lpulDenominator) \
  (This)->lpVtbl->QueryPosition(This, lpulRow, lpulNumerator, lpulDenominator)
#define IMAPITable_FindRow(This, lpRestriction, bkOrigin, ulFlags) (This)->lpVtbl->FindRow(This, \
  lpRestriction, bkOrigin, ulFlags)
#define IMAPITable_Restrict(This, lpRestriction, ulFlags) (This)->lpVtbl->Restrict(This, lpRestriction, \
  ulFlags)
#define IMAPITable_CreateBookmark(This, lpbkPosition) (This)->lpVtbl->CreateBookmark(This, lpbkPosition)
#define IMAPITable_FreeBookmark(This, bkPosition) (This)->lpVtbl->FreeBookmark(This, bkPosition)
#define IMAPITable_SortTable(This, lpSortCriteria, ulFlags) (This)->lpVtbl->SortTable(This, lpSortCriteria, \
  ulFlags)
#define IMAPITable_QuerySortOrder(This, lppSortCriteria) (This)->lpVtbl->QuerySortOrder(This, \
  lppSortCriteria)
#define IMAPITable_QueryRows(This, lRowCount, ulFlags, lppRows) (This)->lpVtbl->QueryRows(This, lRowCount, \
  ulFlags, lppRows)
#define IMAPITable_Abort(This) (This)->lpVtbl->Abort(This)
#define IMAPITable_ExpandRow(This, cbInstanceKey, pbInstanceKey, ulRowCount, ulFlags, lppRows, lpulMoreRows) \
  (This)->lpVtbl->ExpandRow(This, cbInstanceKey, pbInstanceKey, ulRowCount, ulFlags, lppRows, lpulMoreRows)
#define IMAPITable_CollapseRow(This, cbInstanceKey, pbInstanceKey, ulFlags, lpulRowCount) \
  (This)->lpVtbl->CollapseRow(This, cbInstanceKey, pbInstanceKey, ulFlags, lpulRowCount)
#define IMAPITable_WaitForCompletion(This, ulFlags, ulTimeout, lpulTableStatus) \
  (This)->lpVtbl->WaitForCompletion(This, ulFlags, ulTimeout, lpulTableStatus)
#define IMAPITable_GetCollapseState(This, ulFlags, cbInstanceKey, lpbInstanceKey, lpcbCollapseState, \
  lppbCollapseState) (This)->lpVtbl->GetCollapseState(This, ulFlags, cbInstanceKey, lpbInstanceKey, \
  lpcbCollapseState, lppbCollapseState)
#define IMAPITable_SetCollapseState(This, ulFlags, cbCollapseState, pbCollapseState, lpbkLocation) \
  (This)->lpVtbl->SetCollapseState(This, ulFlags, cbCollapseState, pbCollapseState, lpbkLocation)

/* IMAPIAdviseSink */
#define IMAPIAdviseSink_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IMAPIAdviseSink_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IMAPIAdviseSink_Release(This) (This)->lpVtbl->Release(This)
#define IMAPIAdviseSink_OnNotify(This, cNotif, lpNotifications) (This)->lpVtbl->OnNotify(This, cNotif, \
  lpNotifications)

/* IMAPIProgress */
#define IMAPIProgress_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IMAPIProgress_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IMAPIProgress_Release(This) (This)->lpVtbl->Release(This)
#define IMAPIProgress_Progress(This, ulValue, ulCount, ulTotal) (This)->lpVtbl->Progress(This, ulValue, \
  ulCount, ulTotal)
#define IMAPIProgress_GetFlags(This, lpulFlags) (This)->lpVtbl->GetFlags(This, lpulFlags)
#define IMAPIProgress_GetMax(This, lpulMax) (This)->lpVtbl->GetMax(This, lpulMax)
#define IMAPIProgress_GetMin(This, lpulMin) (This)->lpVtbl->GetMin(This, lpulMin)
#define IMAPIProgress_SetLimits(This, lpulMin, lpulMax, lpulFlags) (This)->lpVtbl->SetLimits(This, lpulMin, \
  lpulMax, lpulFlags)

/* IAddrBook */
#define IAddrBook_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IAddrBook_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IAddrBook_Release(This) (This)->lpVtbl->Release(This)
#define IAddrBook_GetLastError(This, hResult, ulFlags, lppMAPIError) (This)->lpVtbl->GetLastError(This, \
  hResult, ulFlags, lppMAPIError)
#define IAddrBook_SaveChanges(This, ulFlags) (This)->lpVtbl->SaveChanges(This, ulFlags)
#define IAddrBook_GetProps(This, lpPropTagArray, ulFlags, lpcValues, lppPropArray) \
  (This)->lpVtbl->GetProps(This, lpPropTagArray, ulFlags, lpcValues, lppPropArray)
#define IAddrBook_GetPropList(This, ulFlags, lppPropTagArray) (This)->lpVtbl->GetPropList(This, ulFlags, \
  lppPropTagArray)
#define IAddrBook_OpenProperty(This, ulPropTag, lpiid, ulInterfaceOptions, ulFlags, lppUnk) \
  (This)->lpVtbl->OpenProperty(This, ulPropTag, lpiid, ulInterfaceOptions, ulFlags, lppUnk)
#define IAddrBook_SetProps(This, cValues, lpPropArray, lppProblems) (This)->lpVtbl->SetProps(This, cValues, \
  lpPropArray, lppProblems)
#define IAddrBook_DeleteProps(This, lpPropTagArray, lppProblems) (This)->lpVtbl->DeleteProps(This, \
  lpPropTagArray, lppProblems)
#define IAddrBook_CopyTo(This, ciidExclude, rgiidExclude, lpExcludeProps, ulUIParam, lpProgress, \
  lpInterface, lpDestObj, ulFlags, lppProblems) (This)->lpVtbl->CopyTo(This, ciidExclude, rgiidExclude, \
  lpExcludeProps, ulUIParam, lpProgress, lpInterface, lpDestObj, ulFlags, lppProblems)
#define IAddrBook_CopyProps(This, lpIncludeProps, ulUIParam, lpProgress, lpInterface, lpDestObj, ulFlags, \
  lppProblems) (This)->lpVtbl->CopyProps(This, lpIncludeProps, ulUIParam, lpProgress, lpInterface, \
  lpDestObj, ulFlags, lppProblems)
#define IAddrBook_GetNamesFromIDs(This, lppPropTags, lpPropSetGuid, ulFlags, lpcPropNames, lpppPropNames) \
  (This)->lpVtbl->GetNamesFromIDs(This, lppPropTags, lpPropSetGuid, ulFlags, lpcPropNames, lpppPropNames)
#define IAddrBook_GetIDsFromNames(This, cPropNames, lppPropNames, ulFlags, lppPropTags) \
  (This)->lpVtbl->GetIDsFromNames(This, cPropNames, lppPropNames, ulFlags, lppPropTags)
#define IAddrBook_OpenEntry(This, cbEntryID, lpEntryID, lpInterface, ulFlags, lpulObjType, lppUnk) \
  (This)->lpVtbl->OpenEntry(This, cbEntryID, lpEntryID, lpInterface, ulFlags, lpulObjType, lppUnk)
#define IAddrBook_CompareEntryIDs(This, cbEntryID1, lpEntryID1, cbEntryID2, lpEntryID2, ulFlags, lpulResult) \
  (This)->lpVtbl->CompareEntryIDs(This, cbEntryID1, lpEntryID1, cbEntryID2, lpEntryID2, ulFlags, lpulResult)
#define IAddrBook_Advise(This, cbEntryID, lpEntryID, ulEventMask, lpAdviseSink, lpulConnection) \
  (This)->lpVtbl->Advise(This, cbEntryID, lpEntryID, ulEventMask, lpAdviseSink, lpulConnection)
#define IAddrBook_Unadvise(This, ulConnection) (This)->lpVtbl->Unadvise(This, ulConnection)
#define IAddrBook_CreateOneOff(This, lpszName, lpszAdrType, lpszAddress, ulFlags, lpcbEntryID, lppEntryID) \
  (This)->lpVtbl->CreateOneOff(This, lpszName, lpszAdrType, lpszAddress, ulFlags, lpcbEntryID, lppEntryID)
#define IAddrBook_NewEntry(This, ulUIParam, ulFlags, cbEIDContainer, lpEIDContainer, cbEIDNewEntryTpl, \
  lpEIDNewEntryTpl, lpcbEIDNewEntry, lppEIDNewEntry) (This)->lpVtbl->NewEntry(This, ulUIParam, ulFlags, \
  cbEIDContainer, lpEIDContainer, cbEIDNewEntryTpl, lpEIDNewEntryTpl, lpcbEIDNewEntry, lppEIDNewEntry)
#define IAddrBook_ResolveName(This, ulUIParam, ulFlags, lpszNewEntryTitle, lpAdrList) \
  (This)->lpVtbl->ResolveName(This, ulUIParam, ulFlags, lpszNewEntryTitle, lpAdrList)
#define IAddrBook_Address(This, lpulUIParam, lpAdrParms, lppAdrList) (This)->lpVtbl->Address(This, \
  lpulUIParam, lpAdrParms, lppAdrList)
#define IAddrBook_Details(This, lpulUIParam, lpfnDismiss, lpvDismissContext, cbEntryID, lpEntryID, \
  lpfButtonCallback, lpvButtonContext, lpszButtonText, ulFlags) (This)->lpVtbl->Details(This, lpulUIParam, \
  lpfnDismiss, lpvDismissContext, cbEntryID, lpEntryID, lpfButtonCallback, lpvButtonContext, lpszButtonText, \
  ulFlags)
#define IAddrBook_RecipOptions(This, ulUIParam, ulFlags, lpRecip) (This)->lpVtbl->RecipOptions(This, \
  ulUIParam, ulFlags, lpRecip)
#define IAddrBook_QueryDefaultRecipOpt(This, lpszAdrType, ulFlags, lpcValues, lppOptions) \
  (This)->lpVtbl->QueryDefaultRecipOpt(This, lpszAdrType, ulFlags, lpcValues, lppOptions)
#define IAddrBook_GetPAB(This, lpcbEntryID, lppEntryID) (This)->lpVtbl->GetPAB(This, lpcbEntryID, \
  lppEntryID)
#define IAddrBook_SetPAB(This, cbEntryID, lpEntryID) (This)->lpVtbl->SetPAB(This, cbEntryID, lpEntryID)
#define IAddrBook_GetDefaultDir(This, lpcbEntryID, lppEntryID) (This)->lpVtbl->GetDefaultDir(This, \
  lpcbEntryID, lppEntryID)
#define IAddrBook_SetDefaultDir(This, cbEntryID, lpEntryID) (This)->lpVtbl->SetDefaultDir(This, cbEntryID, \
  lpEntryID)
#define IAddrBook_GetSearchPath(This, ulFlags, lppSearchPath) (This)->lpVtbl->GetSearchPath(This, ulFlags, \
  lppSearchPath)
#define IAddrBook_SetSearchPath(This, ulFlags, lpSearchPath) (This)->lpVtbl->SetSearchPath(This, ulFlags, \
  lpSearchPath)
#define IAddrBook_PrepareRecips(This, ulFlags, lpPropTagArray, lpRecipList) \
  (This)->lpVtbl->PrepareRecips(This, ulFlags, lpPropTagArray, lpRecipList)

/* IOrvSession */
#define IOrvSession_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IOrvSession_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IOrvSession_Release(This) (This)->lpVtbl->Release(This)
#define IOrvSession_GetLastError(This, hResult, ulFlags, lppMAPIError) (This)->lpVtbl->GetLastError(This, \
  hResult, ulFlags, lppMAPIError)
#define IOrvSession_AllocateBuffer(This, cbSize, lppBuffer) (This)->lpVtbl->AllocateBuffer(This, cbSize, \
  lppBuffer)
#define IOrvSession_AllocateMore(This, cbSize, lpObject, lppBuffer) (This)->lpVtbl->AllocateMore(This, \
  cbSize, lpObject, lppBuffer)
#define IOrvSession_FreeBuffer(This, lpBuffer) (This)->lpVtbl->FreeBuffer(This, lpBuffer)
#define IOrvSession_FreeProws(This, lpRows) (This)->lpVtbl->FreeProws(This, lpRows)
#define IOrvSession_FreePadrlist(This, lpAdrList) (This)->lpVtbl->FreePadrlist(This, lpAdrList)
#define IOrvSession_OpenAddressBook(This, ulFlags, lppAdrBook) (This)->lpVtbl->OpenAddressBook(This, \
  ulFlags, lppAdrBook)
#define IOrvSession_ExpandRecipients(This, ulFlags, lppAdrList) (This)->lpVtbl->ExpandRecipients(This, \
  ulFlags, lppAdrList)
#define IOrvSession_GetSessionEntryID(This, lpcbEntryID, lppEntryID) (This)->lpVtbl->GetSessionEntryID(This, \
  lpcbEntryID, lppEntryID)
#define IOrvSession_AdminServices(This, ulFlags, lppServiceAdmin) (This)->lpVtbl->AdminServices(This, \
  ulFlags, lppServiceAdmin)

/* IOrvSession2 */
#define IOrvSession2_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IOrvSession2_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IOrvSession2_Release(This) (This)->lpVtbl->Release(This)
#define IOrvSession2_GetLastError(This, hResult, ulFlags, lppMAPIError) (This)->lpVtbl->GetLastError(This, \
  hResult, ulFlags, lppMAPIError)
#define IOrvSession2_AllocateBuffer(This, cbSize, lppBuffer) (This)->lpVtbl->AllocateBuffer(This, cbSize, \
  lppBuffer)
#define IOrvSession2_AllocateMore(This, cbSize, lpObject, lppBuffer) (This)->lpVtbl->AllocateMore(This, \
  cbSize, lpObject, lppBuffer)
#define IOrvSession2_FreeBuffer(This, lpBuffer) (This)->lpVtbl->FreeBuffer(This, lpBuffer)
#define IOrvSession2_FreeProws(This, lpRows) (This)->lpVtbl->FreeProws(This, lpRows)
#define IOrvSession2_FreePadrlist(This, lpAdrList) (This)->lpVtbl->FreePadrlist(This, lpAdrList)
#define IOrvSession2_OpenAddressBook(This, ulFlags, lppAdrBook) (This)->lpVtbl->OpenAddressBook(This, \
  ulFlags, lppAdrBook)
#define IOrvSession2_ExpandRecipients(This, ulFlags, lppAdrList) (This)->lpVtbl->ExpandRecipients(This, \
  ulFlags, lppAdrList)
#define IOrvSession2_GetSessionEntryID(This, lpcbEntryID, lppEntryID) \
  (This)->lpVtbl->GetSessionEntryID(This, lpcbEntryID, lppEntryID)
#define IOrvSession2_AdminServices(This, ulFlags, lppServiceAdmin) (This)->lpVtbl->AdminServices(This, \
  ulFlags, lppServiceAdmin)
#define IOrvSession2_GetProblems(This, ulFlags, lppProblems) (This)->lpVtbl->GetProblems(This, ulFlags, \
  lppProblems)

/* IOrvProfAdmin */
#define IOrvProfAdmin_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IOrvProfAdmin_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IOrvProfAdmin_Release(This) (This)->lpVtbl->Release(This)
#define IOrvProfAdmin_GetLastError(This, hResult, ulFlags, lppMAPIError) (This)->lpVtbl->GetLastError(This, \
  hResult, ulFlags, lppMAPIError)
#define IOrvProfAdmin_GetProfileTable(This, ulFlags, lppTable) (This)->lpVtbl->GetProfileTable(This, \
  ulFlags, lppTable)
#define IOrvProfAdmin_CreateProfile(This, lpszProfileName, ulUIParam, ulFlags) \
  (This)->lpVtbl->CreateProfile(This, lpszProfileName, ulUIParam, ulFlags)
#define IOrvProfAdmin_DeleteProfile(This, lpszProfileName, ulFlags) (This)->lpVtbl->DeleteProfile(This, \
  lpszProfileName, ulFlags)
#define IOrvProfAdmin_ConfigureProfile(This, lpszProfileName, ulUIParam, ulFlags) \
  (This)->lpVtbl->ConfigureProfile(This, lpszProfileName, ulUIParam, ulFlags)
#define IOrvProfAdmin_CopyProfile(This, lpszOldProfileName, lpszNewProfileName, ulFlags) \
  (This)->lpVtbl->CopyProfile(This, lpszOldProfileName, lpszNewProfileName, ulFlags)
#define IOrvProfAdmin_RenameProfile(This, lpszOldProfileName, lpszNewProfileName, ulFlags) \
  (This)->lpVtbl->RenameProfile(This, lpszOldProfileName, lpszNewProfileName, ulFlags)
#define IOrvProfAdmin_SetDefaultProfile(This, lpszProfileName, ulFlags) \
  (This)->lpVtbl->SetDefaultProfile(This, lpszProfileName, ulFlags)
#define IOrvProfAdmin_AdminServices(This, lpszProfileName, ulFlags, lppServiceAdmin) \
  (This)->lpVtbl->AdminServices(This, lpszProfileName, ulFlags, lppServiceAdmin)

/* IOrvProfAdmin2 */
#define IOrvProfAdmin2_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IOrvProfAdmin2_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IOrvProfAdmin2_Release(This) (This)->lpVtbl->Release(This)
#define IOrvProfAdmin2_GetLastError(This, hResult, ulFlags, lppMAPIError) (This)->lpVtbl->GetLastError(This, \
  hResult, ulFlags, lppMAPIError)
#define IOrvProfAdmin2_GetProfileTable(This, ulFlags, lppTable) (This)->lpVtbl->GetProfileTable(This, \
  ulFlags, lppTable)
#define IOrvProfAdmin2_CreateProfile(This, lpszProfileName, ulUIParam, ulFlags) \
  (This)->lpVtbl->CreateProfile(This, lpszProfileName, ulUIParam, ulFlags)
#define IOrvProfAdmin2_DeleteProfile(This, lpszProfileName, ulFlags) (This)->lpVtbl->DeleteProfile(This, \
  lpszProfileName, ulFlags)
#define IOrvProfAdmin2_ConfigureProfile(This, lpszProfileName, ulUIParam, ulFlags) \
  (This)->lpVtbl->ConfigureProfile(This, lpszProfileName, ulUIParam, ulFlags)
#define IOrvProfAdmin2_CopyProfile(This, lpszOldProfileName, lpszNewProfileName, ulFlags) \
  (This)->lpVtbl->CopyProfile(This, lpszOldProfileName, lpszNewProfileName, ulFlags)
#define IOrvProfAdmin2_RenameProfile(This, lpszOldProfileName, lpszNewProfileName, ulFlags) \
  (This)->lpVtbl->RenameProfile(This, lpszOldProfileName, lpszNewProfileName, ulFlags)
#define IOrvProfAdmin2_SetDefaultProfile(This, lpszProfileName, ulFlags) \
  (This)->lpVtbl->SetDefaultProfile(This, lpszProfileName, ulFlags)
#define IOrvProfAdmin2_AdminServices(This, lpszProfileName, ulFlags, lppServiceAdmin) \
  (This)->lpVtbl->AdminServices(This, lpszProfileName, ulFlags, lppServiceAdmin)
#define IOrvProfAdmin2_GetStoredServiceTable(This, lpszProfileName, ulFlags, lppTable) \
  (This)->lpVtbl->GetStoredServiceTable(This, lpszProfileName, ulFlags, lppTable)
#define IOrvProfAdmin2_DeleteStoredService(This, lpszProfileName, lpszKeyName, ulFlags) \
  (This)->lpVtbl->DeleteStoredService(This, lpszProfileName, lpszKeyName, ulFlags)

/* IOrvProfAdmin3 */
#define IOrvProfAdmin3_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IOrvProfAdmin3_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IOrvProfAdmin3_Release(This) (This)->lpVtbl->Release(This)
#define IOrvProfAdmin3_GetLastError(This, hResult, ulFlags, lppMAPIError) (This)->lpVtbl->GetLastError(This, \
  hResult, ulFlags, lppMAPIError)
#define IOrvProfAdmin3_GetProfileTable(This, ulFlags, lppTable) (This)->lpVtbl->GetProfileTable(This, \
  ulFlags, lppTable)
#define IOrvProfAdmin3_CreateProfile(This, lpszProfileName, ulUIParam, ulFlags) \
  (This)->lpVtbl->CreateProfile(This, lpszProfileName, ulUIParam, ulFlags)
#define IOrvProfAdmin3_DeleteProfile(This, lpszProfileName, ulFlags) (This)->lpVtbl->DeleteProfile(This, \
  lpszProfileName, ulFlags)
#define IOrvProfAdmin3_ConfigureProfile(This, lpszProfileName, ulUIParam, ulFlags) \
  (This)->lpVtbl->ConfigureProfile(This, lpszProfileName, ulUIParam, ulFlags)
#define IOrvProfAdmin3_CopyProfile(This, lpszOldProfileName, lpszNewProfileName, ulFlags) \
  (This)->lpVtbl->CopyProfile(This, lpszOldProfileName, lpszNewProfileName, ulFlags)
#define IOrvProfAdmin3_RenameProfile(This, lpszOldProfileName, lpszNewProfileName, ulFlags) \
  (This)->lpVtbl->RenameProfile(This, lpszOldProfileName, lpszNewProfileName, ulFlags)
#define IOrvProfAdmin3_SetDefaultProfile(This, lpszProfileName, ulFlags) \
  (This)->lpVtbl->SetDefaultProfile(This, lpszProfileName, ulFlags)
#define IOrvProfAdmin3_AdminServices(This, lpszProfileName, ulFlags, lppServiceAdmin) \
  (This)->lpVtbl->AdminServices(This, lpszProfileName, ulFlags, lppServiceAdmin)
#define IOrvProfAdmin3_GetStoredServiceTable(This, lpszProfileName, ulFlags, lppTable) \
  (This)->lpVtbl->GetStoredServiceTable(This, lpszProfileName, ulFlags, lppTable)
#define IOrvProfAdmin3_DeleteStoredService(This, lpszProfileName, lpszKeyName, ulFlags) \
  (This)->lpVtbl->DeleteStoredService(This, lpszProfileName, lpszKeyName, ulFlags)
#define IOrvProfAdmin3_GetStoredProfileTable(This, ulFlags, lppTable) \
  (This)->lpVtbl->GetStoredProfileTable(This, ulFlags, lppTable)
#define IOrvProfAdmin3_SetAsideStoredService(This, lpszProfileName, lpszKeyName, ulFlags) \
  (This)->lpVtbl->SetAsideStoredService(This, lpszProfileName, lpszKeyName, ulFlags)

/* IABServiceAdmin */
#define IABServiceAdmin_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IABServiceAdmin_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IABServiceAdmin_Release(This) (This)->lpVtbl->Release(This)
#define IABServiceAdmin_GetLastError(This, hResult, ulFlags, lppMAPIError) \
  (This)->lpVtbl->GetLastError(This, hResult, ulFlags, lppMAPIError)
#define IABServiceAdmin_GetMsgServiceTable(This, ulFlags, lppTable) (This)->lpVtbl->GetMsgServiceTable(This, \
  ulFlags, lppTable)
#define IABServiceAdmin_CreateMsgService(This, lpszService, lpszDisplayName, lpszExtraConfig, \
  ulResourceFlags, ulUIParam, ulFlags) (This)->lpVtbl->CreateMsgService(This, lpszService, lpszDisplayName, \
  lpszExtraConfig, ulResourceFlags, ulUIParam, ulFlags)
#define IABServiceAdmin_DeleteMsgService(This, lpServiceUID) (This)->lpVtbl->DeleteMsgService(This, \
  lpServiceUID)
#define IABServiceAdmin_ConfigureMsgService(This, lpServiceUID, ulUIParam, ulFlags, cValues, lpProps, \
  lppProfSect) (This)->lpVtbl->ConfigureMsgService(This, lpServiceUID, ulUIParam, ulFlags, cValues, lpProps, \
  lppProfSect)
#define IABServiceAdmin_OpenProfileSection(This, lpServiceUID, lpInterface, ulFlags, lppProfSect) \
  (This)->lpVtbl->OpenProfileSection(This, lpServiceUID, lpInterface, ulFlags, lppProfSect)

/* IOrvSupport */
#define IOrvSupport_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IOrvSupport_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IOrvSupport_Release(This) (This)->lpVtbl->Release(This)
#define IOrvSupport_GetLastError(This, hResult, ulFlags, lppMAPIError) (This)->lpVtbl->GetLastError(This, \
  hResult, ulFlags, lppMAPIError)
#define IOrvSupport_GetMemAllocRoutines(This, lppAllocateBuffer, lppAllocateMore, lppFreeBuffer) \
  (This)->lpVtbl->GetMemAllocRoutines(This, lppAllocateBuffer, lppAllocateMore, lppFreeBuffer)
#define IOrvSupport_SetProviderUID(This, lpProviderUID) (This)->lpVtbl->SetProviderUID(This, lpProviderUID)
#define IOrvSupport_Reserved7(This) (This)->lpVtbl->Reserved7(This)
#define IOrvSupport_DoCopyTo(This, lpSrcInterface, lpSrcObj, ciidExclude, rgiidExclude, lpExcludeProps, \
  ulUIParam, lpProgress, lpDestInterface, lpDestObj, ulFlags, lppProblems) (This)->lpVtbl->DoCopyTo(This, \
  lpSrcInterface, lpSrcObj, ciidExclude, rgiidExclude, lpExcludeProps, ulUIParam, lpProgress, \
  lpDestInterface, lpDestObj, ulFlags, lppProblems)
#define IOrvSupport_DoCopyProps(This, lpSrcInterface, lpSrcObj, lpIncludeProps, ulUIParam, lpProgress, \
  lpDestInterface, lpDestObj, ulFlags, lppProblems) (This)->lpVtbl->DoCopyProps(This, lpSrcInterface, \
  lpSrcObj, lpIncludeProps, ulUIParam, lpProgress, lpDestInterface, lpDestObj, ulFlags, lppProblems)
#define IOrvSupport_Reserved10(This) (This)->lpVtbl->Reserved10(This)

/* IOrvSupport2 */
#define IOrvSupport2_QueryInterface(This, riid, ppvObject) (This)->lpVtbl->QueryInterface(This, riid, \
  ppvObject)
#define IOrvSupport2_AddRef(This) (This)->lpVtbl->AddRef(This)
#define IOrvSupport2_Release(This) (This)->lpVtbl->Release(This)
#define IOrvSupport2_GetLastError(This, hResult, ulFlags, lppMAPIError) (This)->lpVtbl->GetLastError(This, \
  hResult, ulFlags, lppMAPIError)
#define IOrvSupport2_GetMemAllocRoutines(This, lppAllocateBuffer, lppAllocateMore, lppFreeBuffer) \
  (This)->lpVtbl->GetMemAllocRoutines(This, lppAllocateBuffer, lppAllocateMore, lppFreeBuffer)
#define IOrvSupport2_SetProviderUID(This, lpProviderUID) (This)->lpVtbl->SetProviderUID(This, lpProviderUID)
#define IOrvSupport2_Reserved7(This) (This)->lpVtbl->Reserved7(This)
#define IOrvSupport2_DoCopyTo(This, lpSrcInterface, lpSrcObj, ciidExclude, rgiidExclude, lpExcludeProps, \
  ulUIParam, lpProgress, lpDestInterface, lpDestObj, ulFlags, lppProblems) (This)->lpVtbl->DoCopyTo(This, \
  lpSrcInterface, lpSrcObj, ciidExclude, rgiidExclude, lpExcludeProps, ulUIParam, lpProgress, \
  lpDestInterface, lpDestObj, ulFlags, lppProblems)
#define IOrvSupport2_DoCopyProps(This, lpSrcInterface, lpSrcObj, lpIncludeProps, ulUIParam, lpProgress, \
  lpDestInterface, lpDestObj, ulFlags, lppProblems) (This)->lpVtbl->DoCopyProps(This, lpSrcInterface, \
  lpSrcObj, lpIncludeProps, ulUIParam, lpProgress, lpDestInterface, lpDestObj, ulFlags, lppProblems)
#define IOrvSupport2_Reserved10(This) (This)->lpVtbl->Reserved10(This)
#define IOrvSupport2_OpenEntry(This, cbEntryID, lpEntryID, lpInterface, ulFlags, lpulObjType, lppUnk) \
  (This)->lpVtbl->OpenEntry(This, cbEntryID, lpEntryID, lpInterface, ulFlags, lpulObjType, lppUnk)
#define IOrvSupport2_ReportProblem(This, hResult, lpszText) (This)->lpVtbl->ReportProblem(This, hResult, \
  lpszText)

/* clang-format on */
#endif

#endif
