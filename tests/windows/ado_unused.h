// The members of ADO's interfaces that the component does not use: the stand-ins refuse them.
#pragma once

#include "store/ado/ado_interfaces.h"
#include "windows/counted.h"

namespace vlout::tests {

// Dispatch and properties, which all of ADO's objects have.
template <typename Interface>
class Unused : public windows::Counted<Interface> {
 public:
  STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                      UINT*) override {
    return E_NOTIMPL;
  }

 protected:
  using windows::Counted<Interface>::Counted;
};

class UnusedConnection : public Unused<Connection15> {
 public:
  STDMETHODIMP get_Properties(ADOProperties**) override { return E_NOTIMPL; }
  STDMETHODIMP get_ConnectionString(BSTR*) override { return E_NOTIMPL; }
  STDMETHODIMP put_ConnectionString(BSTR) override { return E_NOTIMPL; }
  STDMETHODIMP get_CommandTimeout(LONG*) override { return E_NOTIMPL; }
  STDMETHODIMP put_CommandTimeout(LONG) override { return E_NOTIMPL; }
  STDMETHODIMP get_ConnectionTimeout(LONG*) override { return E_NOTIMPL; }
  STDMETHODIMP get_Version(BSTR*) override { return E_NOTIMPL; }
  STDMETHODIMP BeginTrans(long*) override { return E_NOTIMPL; }
  STDMETHODIMP CommitTrans() override { return E_NOTIMPL; }
  STDMETHODIMP RollbackTrans() override { return E_NOTIMPL; }
  STDMETHODIMP get_DefaultDatabase(BSTR*) override { return E_NOTIMPL; }
  STDMETHODIMP put_DefaultDatabase(BSTR) override { return E_NOTIMPL; }
  STDMETHODIMP get_IsolationLevel(IsolationLevelEnum*) override { return E_NOTIMPL; }
  STDMETHODIMP put_IsolationLevel(IsolationLevelEnum) override { return E_NOTIMPL; }
  STDMETHODIMP get_Attributes(long*) override { return E_NOTIMPL; }
  STDMETHODIMP put_Attributes(long) override { return E_NOTIMPL; }
  STDMETHODIMP get_CursorLocation(CursorLocationEnum*) override { return E_NOTIMPL; }
  STDMETHODIMP put_CursorLocation(CursorLocationEnum) override { return E_NOTIMPL; }
  STDMETHODIMP get_Mode(ConnectModeEnum*) override { return E_NOTIMPL; }
  STDMETHODIMP put_Mode(ConnectModeEnum) override { return E_NOTIMPL; }
  STDMETHODIMP get_Provider(BSTR*) override { return E_NOTIMPL; }
  STDMETHODIMP put_Provider(BSTR) override { return E_NOTIMPL; }
  STDMETHODIMP OpenSchema(SchemaEnum, VARIANT, VARIANT, _ADORecordset**) override {
    return E_NOTIMPL;
  }

 protected:
  using Unused::Unused;
};

class UnusedRecordset : public Unused<Recordset15> {
 public:
  STDMETHODIMP get_Properties(ADOProperties**) override { return E_NOTIMPL; }
  STDMETHODIMP get_AbsolutePosition(PositionEnum*) override { return E_NOTIMPL; }
  STDMETHODIMP put_AbsolutePosition(PositionEnum) override { return E_NOTIMPL; }
  STDMETHODIMP putref_ActiveConnection(IDispatch*) override { return E_NOTIMPL; }
  STDMETHODIMP put_ActiveConnection(VARIANT) override { return E_NOTIMPL; }
  STDMETHODIMP get_ActiveConnection(VARIANT*) override { return E_NOTIMPL; }
  STDMETHODIMP get_BOF(VARIANT_BOOL*) override { return E_NOTIMPL; }
  STDMETHODIMP get_Bookmark(VARIANT*) override { return E_NOTIMPL; }
  STDMETHODIMP put_Bookmark(VARIANT) override { return E_NOTIMPL; }
  STDMETHODIMP get_CacheSize(long*) override { return E_NOTIMPL; }
  STDMETHODIMP put_CacheSize(long) override { return E_NOTIMPL; }
  STDMETHODIMP get_CursorType(CursorTypeEnum*) override { return E_NOTIMPL; }
  STDMETHODIMP put_CursorType(CursorTypeEnum) override { return E_NOTIMPL; }
  STDMETHODIMP get_LockType(LockTypeEnum*) override { return E_NOTIMPL; }
  STDMETHODIMP put_LockType(LockTypeEnum) override { return E_NOTIMPL; }
  STDMETHODIMP get_MaxRecords(long*) override { return E_NOTIMPL; }
  STDMETHODIMP put_MaxRecords(long) override { return E_NOTIMPL; }
  STDMETHODIMP putref_Source(IDispatch*) override { return E_NOTIMPL; }
  STDMETHODIMP put_Source(BSTR) override { return E_NOTIMPL; }
  STDMETHODIMP get_Source(VARIANT*) override { return E_NOTIMPL; }
  STDMETHODIMP AddNew(VARIANT, VARIANT) override { return E_NOTIMPL; }
  STDMETHODIMP CancelUpdate() override { return E_NOTIMPL; }
  STDMETHODIMP Delete(AffectEnum) override { return E_NOTIMPL; }
  STDMETHODIMP GetRows(long, VARIANT, VARIANT, VARIANT*) override { return E_NOTIMPL; }
  STDMETHODIMP Move(long, VARIANT) override { return E_NOTIMPL; }
  STDMETHODIMP MovePrevious() override { return E_NOTIMPL; }
  STDMETHODIMP MoveFirst() override { return E_NOTIMPL; }
  STDMETHODIMP MoveLast() override { return E_NOTIMPL; }
  STDMETHODIMP Requery(LONG) override { return E_NOTIMPL; }
  STDMETHODIMP _xResync(AffectEnum) override { return E_NOTIMPL; }
  STDMETHODIMP Update(VARIANT, VARIANT) override { return E_NOTIMPL; }
  STDMETHODIMP get_AbsolutePage(PositionEnum*) override { return E_NOTIMPL; }
  STDMETHODIMP put_AbsolutePage(PositionEnum) override { return E_NOTIMPL; }
  STDMETHODIMP get_EditMode(EditModeEnum*) override { return E_NOTIMPL; }
  STDMETHODIMP get_Filter(VARIANT*) override { return E_NOTIMPL; }
  STDMETHODIMP put_Filter(VARIANT) override { return E_NOTIMPL; }
  STDMETHODIMP get_PageCount(long*) override { return E_NOTIMPL; }
  STDMETHODIMP get_PageSize(long*) override { return E_NOTIMPL; }
  STDMETHODIMP put_PageSize(long) override { return E_NOTIMPL; }
  STDMETHODIMP get_Sort(BSTR*) override { return E_NOTIMPL; }
  STDMETHODIMP put_Sort(BSTR) override { return E_NOTIMPL; }
  STDMETHODIMP get_Status(long*) override { return E_NOTIMPL; }
  STDMETHODIMP get_State(LONG*) override { return E_NOTIMPL; }
  STDMETHODIMP _xClone(_ADORecordset**) override { return E_NOTIMPL; }
  STDMETHODIMP UpdateBatch(AffectEnum) override { return E_NOTIMPL; }
  STDMETHODIMP CancelBatch(AffectEnum) override { return E_NOTIMPL; }
  STDMETHODIMP get_CursorLocation(CursorLocationEnum*) override { return E_NOTIMPL; }
  STDMETHODIMP NextRecordset(VARIANT*, _ADORecordset**) override { return E_NOTIMPL; }
  STDMETHODIMP Supports(CursorOptionEnum, VARIANT_BOOL*) override { return E_NOTIMPL; }
  STDMETHODIMP get_Collect(VARIANT, VARIANT*) override { return E_NOTIMPL; }
  STDMETHODIMP put_Collect(VARIANT, VARIANT) override { return E_NOTIMPL; }
  STDMETHODIMP get_MarshalOptions(MarshalOptionsEnum*) override { return E_NOTIMPL; }
  STDMETHODIMP put_MarshalOptions(MarshalOptionsEnum) override { return E_NOTIMPL; }
  STDMETHODIMP Find(BSTR, long, SearchDirectionEnum, VARIANT) override { return E_NOTIMPL; }

 protected:
  using Unused::Unused;
};

class UnusedField : public Unused<ADOField> {
 public:
  STDMETHODIMP get_Properties(ADOProperties**) override { return E_NOTIMPL; }
  STDMETHODIMP get_Attributes(long*) override { return E_NOTIMPL; }
  STDMETHODIMP get_DefinedSize(long*) override { return E_NOTIMPL; }
  STDMETHODIMP get_Name(BSTR*) override { return E_NOTIMPL; }
  STDMETHODIMP put_Value(VARIANT) override { return E_NOTIMPL; }
  STDMETHODIMP get_Precision(BYTE*) override { return E_NOTIMPL; }
  STDMETHODIMP get_NumericScale(BYTE*) override { return E_NOTIMPL; }
  STDMETHODIMP AppendChunk(VARIANT) override { return E_NOTIMPL; }
  STDMETHODIMP get_OriginalValue(VARIANT*) override { return E_NOTIMPL; }
  STDMETHODIMP get_UnderlyingValue(VARIANT*) override { return E_NOTIMPL; }
  STDMETHODIMP get_DataFormat(IUnknown**) override { return E_NOTIMPL; }
  STDMETHODIMP putref_DataFormat(IUnknown*) override { return E_NOTIMPL; }
  STDMETHODIMP put_Precision(BYTE) override { return E_NOTIMPL; }
  STDMETHODIMP put_NumericScale(BYTE) override { return E_NOTIMPL; }
  STDMETHODIMP put_Type(DataTypeEnum) override { return E_NOTIMPL; }
  STDMETHODIMP put_DefinedSize(long) override { return E_NOTIMPL; }
  STDMETHODIMP put_Attributes(long) override { return E_NOTIMPL; }
  STDMETHODIMP get_Status(long*) override { return E_NOTIMPL; }

 protected:
  using Unused::Unused;
};

class UnusedFields : public Unused<ADOFields> {
 public:
  STDMETHODIMP get_Count(long*) override { return E_NOTIMPL; }
  STDMETHODIMP _NewEnum(IUnknown**) override { return E_NOTIMPL; }
  STDMETHODIMP Refresh() override { return E_NOTIMPL; }

  STDMETHODIMP _Append(BSTR, DataTypeEnum, long, FieldAttributeEnum) override { return E_NOTIMPL; }
  STDMETHODIMP Delete(VARIANT) override { return E_NOTIMPL; }
  STDMETHODIMP Append(BSTR, DataTypeEnum, long, FieldAttributeEnum, VARIANT) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP Update() override { return E_NOTIMPL; }
  STDMETHODIMP Resync(ResyncEnum) override { return E_NOTIMPL; }
  STDMETHODIMP CancelUpdate() override { return E_NOTIMPL; }

 protected:
  using Unused::Unused;
};

class UnusedErrors : public Unused<ADOErrors> {
 public:
  STDMETHODIMP _NewEnum(IUnknown**) override { return E_NOTIMPL; }
  STDMETHODIMP Refresh() override { return E_NOTIMPL; }

 protected:
  using Unused::Unused;
};

class UnusedError : public Unused<ADOError> {
 public:
  STDMETHODIMP get_Number(long*) override { return E_NOTIMPL; }
  STDMETHODIMP get_Source(BSTR*) override { return E_NOTIMPL; }
  STDMETHODIMP get_HelpFile(BSTR*) override { return E_NOTIMPL; }
  STDMETHODIMP get_HelpContext(long*) override { return E_NOTIMPL; }
  STDMETHODIMP get_SQLState(BSTR*) override { return E_NOTIMPL; }
  STDMETHODIMP get_NativeError(long*) override { return E_NOTIMPL; }

 protected:
  using Unused::Unused;
};

}  // namespace vlout::tests
