#include "platform/accounts.h"

#include "platform/windows/ansi_text.h"
#include "platform/windows/com_apartment.h"
#include "platform/windows/wide_text.h"

#include <windows.h>

#include <objbase.h>

#include <oleauto.h>

#include <iads.h>

#include <adshlp.h>
#include <lmcons.h>

#include <array>
#include <memory>

namespace platform {

namespace {

struct Release {
    void operator()(IUnknown* object) const { object->Release(); }
};

template <class Interface>
using ComPointer = std::unique_ptr<Interface, Release>;

/// A BSTR, freed when this object goes.
struct ComText {
    BSTR text = nullptr;
    ComText() = default;
    ComText(const ComText&) = delete;
    ComText& operator=(const ComText&) = delete;
    ~ComText() { SysFreeString(text); }
};

/// A VARIANT, cleared when this object goes.
struct ComVariant {
    VARIANT value;
    ComVariant() { VariantInit(&value); }
    ComVariant(const ComVariant&) = delete;
    ComVariant& operator=(const ComVariant&) = delete;
    ~ComVariant() { VariantClear(&value); }
};

/// No exceptions of the directory service's proxies; every failure is a null pointer here.
template <class Interface, class Call>
ComPointer<Interface> obtained(Call call) {
    Interface* object = nullptr;
    return ComPointer<Interface>(SUCCEEDED(call(&object)) ? object : nullptr);
}

template <class Interface>
ComPointer<Interface> queried(IUnknown* object, REFIID id) {
    if (object == nullptr) return nullptr;
    return obtained<Interface>(
        [&](Interface** result) { return object->QueryInterface(id, reinterpret_cast<void**>(result)); });
}

std::string utf8(BSTR text) {
    return windows::narrow({text, SysStringLen(text)});
}

/// Moniker of the group; no value for a name that would make another moniker of it.
std::optional<std::wstring> moniker(std::string_view group) {
    if (group.empty() || group.find_first_of("/\\,") != std::string_view::npos) return std::nullopt;
    return L"WinNT://./" + windows::wide(group) + L",group";
}

ComPointer<IEnumVARIANT> memberList(IADsGroup& group) {
    const auto members = obtained<IADsMembers>([&](IADsMembers** result) { return group.Members(result); });
    if (!members) return nullptr;
    const auto list = obtained<IUnknown>([&](IUnknown** result) { return members->get__NewEnum(result); });
    return queried<IEnumVARIANT>(list.get(), IID_IEnumVARIANT);
}

std::vector<std::string> names(IEnumVARIANT& list) {
    std::vector<std::string> result;
    for (;;) {
        ComVariant member;
        ULONG count = 0;
        if (list.Next(1, &member.value, &count) != S_OK) return result;
        if (member.value.vt != VT_DISPATCH) continue;
        const auto object = queried<IADs>(member.value.pdispVal, IID_IADs);
        ComText name;
        if (object && SUCCEEDED(object->get_Name(&name.text))) result.push_back(utf8(name.text));
    }
}

} // namespace

std::optional<std::vector<std::string>> localGroupMembers(std::string_view group) {
    const auto path = moniker(group);
    if (!path) return std::nullopt;
    const windows::ComApartment com;
    const auto object = obtained<IADsGroup>([&](IADsGroup** result) {
        return ADsGetObject(path->c_str(), IID_IADsGroup, reinterpret_cast<void**>(result));
    });
    if (!object) return std::nullopt;
    const auto list = memberList(*object);
    return list ? names(*list) : std::vector<std::string>();
}

std::string userName() {
    std::array<char, UNLEN + 1> name{};
    DWORD size = name.size();
    const DWORD length = GetEnvironmentVariableA("USERNAME", name.data(), size);
    const bool named = length > 0 && length < name.size();
    if (!named && GetUserNameA(name.data(), &size) == FALSE) return {};
    return windows::utf8FromAnsi(name.data());
}

} // namespace platform
