// What every COM object here has in common.
#pragma once

#include <windows.h>

#include <objbase.h>

#include <oleauto.h>

#include <atomic>

namespace provider {

/// Counts its references and answers to one interface and to those that it comes from.
template <class Interface, const IID& id, bool dispatch>
class ComObject : public Interface {
public:
    ComObject() = default;
    ComObject(const ComObject&) = delete;
    ComObject& operator=(const ComObject&) = delete;
    virtual ~ComObject() = default;

    STDMETHODIMP QueryInterface(REFIID wanted, void** object) override {
        const bool known = wanted == IID_IUnknown || wanted == id || (dispatch && wanted == IID_IDispatch);
        *object = known ? static_cast<Interface*>(this) : nullptr;
        if (!known) return E_NOINTERFACE;
        this->AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++count_; }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = --count_;
        if (left == 0) delete this;
        return left;
    }

private:
    std::atomic<ULONG> count_{1};
};

/// An object of the directory: nobody calls it by the names of its methods.
template <class Interface, const IID& id>
class DirectoryObject : public ComObject<Interface, id, true> {
public:
    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        *count = 0;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }
};

/// What the groups and the members of the directory have in common: a name.
template <class Interface, const IID& id>
class NamedObject : public DirectoryObject<Interface, id> {
public:
    explicit NamedObject(const wchar_t* name) : name_(SysAllocString(name)) {}
    ~NamedObject() override { SysFreeString(name_); }

    STDMETHODIMP get_Name(BSTR* name) override {
        *name = SysAllocString(name_);
        return S_OK;
    }
    STDMETHODIMP get_Class(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP get_GUID(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP get_ADsPath(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Parent(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP get_Schema(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP GetInfo() override { return S_OK; }
    STDMETHODIMP SetInfo() override { return E_ACCESSDENIED; }
    STDMETHODIMP Get(BSTR, VARIANT*) override { return E_NOTIMPL; }
    STDMETHODIMP Put(BSTR, VARIANT) override { return E_ACCESSDENIED; }
    STDMETHODIMP GetEx(BSTR, VARIANT*) override { return E_NOTIMPL; }
    STDMETHODIMP PutEx(LONG, BSTR, VARIANT) override { return E_ACCESSDENIED; }
    STDMETHODIMP GetInfoEx(VARIANT, LONG) override { return S_OK; }

private:
    BSTR name_;
};

} // namespace provider
