// Wine has no provider of the local accounts for its directory service. This one knows a single group, whose
// members are the names in an environment variable, separated by semicolons. Without the variable there is no
// such group. Beside it stands the service for screen readers.
#include "tests/driver/windows/provider/accessible_service.h"
#include "tests/driver/windows/provider/com_object.h"

#include <iads.h>

#include <adserr.h>
#include <oleacc.h>

#include <array>
#include <cwchar>
#include <string>
#include <vector>

using namespace provider;

namespace {

constexpr const wchar_t* groupPath = L"WinNT://./Administratoren,group";
constexpr const wchar_t* membersVariable = L"USBTOOL_ADMINISTRATORS";
constexpr CLSID providerClass = {
    0x6d0e9c1e, 0x5d0c, 0x4b8e, {0x9a, 0x53, 0x2f, 0x6a, 0x1f, 0x7f, 0x3b, 0x10}};

using Names = std::vector<std::wstring>;

bool readMembers(Names& names) {
    std::array<wchar_t, 1024> text{};
    const DWORD length = GetEnvironmentVariableW(membersVariable, text.data(), text.size());
    if (length == 0 || length >= text.size()) return false;
    std::wstring name;
    for (DWORD i = 0; i < length; ++i) {
        if (text[i] != L';') {
            name += text[i];
            continue;
        }
        names.push_back(name);
        name.clear();
    }
    names.push_back(name);
    return true;
}

using Member = NamedObject<IADs, IID_IADs>;

class Enumeration : public ComObject<IEnumVARIANT, IID_IEnumVARIANT, false> {
public:
    explicit Enumeration(Names names) : names_(std::move(names)) {}

    STDMETHODIMP Next(ULONG wanted, VARIANT* values, ULONG* fetched) override {
        ULONG count = 0;
        for (; count < wanted && position_ < names_.size(); ++count) {
            VariantInit(&values[count]);
            values[count].vt = VT_DISPATCH;
            values[count].pdispVal = new Member(names_[position_++].c_str());
        }
        if (fetched != nullptr) *fetched = count;
        return count == wanted ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG count) override {
        position_ += count;
        return S_OK;
    }
    STDMETHODIMP Reset() override {
        position_ = 0;
        return S_OK;
    }
    STDMETHODIMP Clone(IEnumVARIANT**) override { return E_NOTIMPL; }

private:
    Names names_;
    std::size_t position_ = 0;
};

class Members : public DirectoryObject<IADsMembers, IID_IADsMembers> {
public:
    explicit Members(Names names) : names_(std::move(names)) {}

    STDMETHODIMP get_Count(LONG* count) override {
        *count = static_cast<LONG>(names_.size());
        return S_OK;
    }
    STDMETHODIMP get__NewEnum(IUnknown** enumeration) override {
        *enumeration = new Enumeration(names_);
        return S_OK;
    }
    STDMETHODIMP get_Filter(VARIANT*) override { return E_NOTIMPL; }
    STDMETHODIMP put_Filter(VARIANT) override { return E_NOTIMPL; }

private:
    Names names_;
};

class Group : public NamedObject<IADsGroup, IID_IADsGroup> {
public:
    explicit Group(Names names) : NamedObject(L"Administratoren"), names_(std::move(names)) {}

    STDMETHODIMP get_Description(BSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP put_Description(BSTR) override { return E_ACCESSDENIED; }
    STDMETHODIMP Members(IADsMembers** members) override {
        *members = new ::Members(names_);
        return S_OK;
    }
    STDMETHODIMP IsMember(BSTR, VARIANT_BOOL*) override { return E_NOTIMPL; }
    STDMETHODIMP Add(BSTR) override { return E_ACCESSDENIED; }
    STDMETHODIMP Remove(BSTR) override { return E_ACCESSDENIED; }

private:
    Names names_;
};

class Provider : public DirectoryObject<IADsOpenDSObject, IID_IADsOpenDSObject> {
public:
    STDMETHODIMP OpenDSObject(BSTR path, BSTR, BSTR, LONG, IDispatch** object) override {
        Names names;
        *object = nullptr;
        if (std::wcscmp(path, groupPath) != 0 || !readMembers(names)) return E_ADS_UNKNOWN_OBJECT;
        *object = new Group(std::move(names));
        return S_OK;
    }
};

IUnknown* makeProvider() {
    return new Provider;
}

class Factory : public ComObject<IClassFactory, IID_IClassFactory, false> {
public:
    using Make = IUnknown* (*)();

    explicit Factory(Make make) : make_(make) {}

    STDMETHODIMP CreateInstance(IUnknown* outer, REFIID id, void** object) override {
        *object = nullptr;
        if (outer != nullptr) return CLASS_E_NOAGGREGATION;
        IUnknown* const instance = make_();
        const HRESULT result = instance->QueryInterface(id, object);
        instance->Release();
        return result;
    }
    STDMETHODIMP LockServer(BOOL) override { return S_OK; }

private:
    Make make_;
};

} // namespace

STDAPI DllGetClassObject(REFCLSID wanted, REFIID id, void** object) {
    *object = nullptr;
    const bool accessible = wanted == CLSID_AccPropServices;
    if (wanted != providerClass && !accessible) return CLASS_E_CLASSNOTAVAILABLE;
    IUnknown* const factory = new Factory(accessible ? makeAccessibleService : makeProvider);
    const HRESULT result = factory->QueryInterface(id, object);
    factory->Release();
    return result;
}

STDAPI DllCanUnloadNow() {
    return S_FALSE;
}
