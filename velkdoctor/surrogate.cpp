#include "velkdoctor/surrogate.h"

#include <algorithm>

#include "platform/handles.h"
#include "tools/typelib/type_reader.h"
#include "velkdoctor/registrations.h"

namespace velk {
namespace {

constexpr const wchar_t* kAppId = L"AppID";

class Switch {
  public:
    Switch(const KnownLibrary& library, bool on) : library_(library), id_(GuidText(library.guid)), on_(on) {}

    SurrogateResult Run() {
        for (const HKEY root : {HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) Apply(root);
        return std::move(result_);
    }

  private:
    void Apply(HKEY root) {
        bool any = false, otherWidth = false;
        for (const KnownClass& each : library_.classes) {
            const std::wstring key = kClassesKey + (L"CLSID\\" + GuidText(each.clsid));
            const bool wanted = on_ && MakesSenseOutside(each.name);
            const bool has = ReadText(root, key, kAppId).has_value();
            if (ReadText(root, key + L"\\InprocServer32", nullptr) && (wanted || has)) {
                any |= wanted;
                if (wanted ? Note(WriteText(root, key, kAppId, id_)) : RemoveValue(root, key))
                    result_.classes.push_back(each.name);
            }
            otherWidth |= ReadText(root, key, kAppId, kOtherView).has_value();
        }
        const std::wstring application = kClassesKey + (L"AppID\\" + id_);
        if (any) {
            // The empty name is the platform's own surrogate program.
            Note(WriteText(root, application, nullptr, library_.name));
            Note(WriteText(root, application, L"DllSurrogate", L""));
        } else if (!on_ && !otherWidth) {
            Note(RegDeleteTreeW(root, application.c_str()));
            // A user's part has no such key from the start. Only an empty one can be deleted this way.
            if (root == HKEY_CURRENT_USER) RegDeleteKeyW(root, (std::wstring(kClassesKey) + kAppId).c_str());
        }
    }

    bool RemoveValue(HKEY root, const std::wstring& path) {
        RegistryKey key;
        LSTATUS status = RegOpenKeyExW(root, path.c_str(), 0, KEY_WRITE, key.Receive());
        if (!status) status = RegDeleteValueW(key.get(), kAppId);
        return Note(status);
    }

    bool Note(LSTATUS status) {
        if (status && status != ERROR_FILE_NOT_FOUND && !result_.status) result_.status = status;
        return status == ERROR_SUCCESS;
    }

    const KnownLibrary& library_;
    const std::wstring id_;
    const bool on_;
    SurrogateResult result_{};
};

}  // namespace

bool MakesSenseOutside(const std::wstring& className) {
    constexpr const wchar_t* kInside[] = {
        L"CFileDialog",  L"CFontDialog",   L"CFormSizeConstraint", L"CGDIArc",     L"CGDIEllipse",
        L"CGDILine",     L"CGDIRectangle", L"CHourglass",          L"CHtmlHelp",   L"CListViewExtended",
        L"CPrintDialog", L"CScreenshot",   L"CShellExecute",       L"HookManager", L"cIconMenu"};
    return std::ranges::find(kInside, className) == std::end(kInside);
}

SurrogateResult SwitchSurrogate(const KnownLibrary& library, bool on) { return Switch(library, on).Run(); }

}  // namespace velk
