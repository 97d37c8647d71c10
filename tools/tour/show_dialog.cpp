// Shows one of the dialogs until a file comes up, so that its picture can be taken from outside:
//
//     show_dialog file|save|print|font STOP-FILE
//
// The print dialog brings a printer of its own, the file dialogs a folder.
#include <filesystem>
#include <functional>
#include <map>
#include <string>

#include "platform/text.h"
#include "support/client.h"
#include "support/dialog_user.h"
#include "support/late_bound.h"
#include "support/scratch_folder.h"
#include "support/test_printer.h"

namespace velk::test {
namespace {

void Set(IDispatch* object, const wchar_t* name, const wchar_t* value) {
    const Variant text = Text(value);
    Let(object, name, {text});
}
void Set(IDispatch* object, const wchar_t* name, LONG value) { Let(object, name, {Arg(value)}); }

void ShowFile(bool toOpen) {
    const ScratchFolder temporary;
    const std::wstring folder = temporary.Path(L"Scales");
    std::filesystem::create_directory(folder);
    for (const wchar_t* name : {L"platform.dat", L"tank 1.dat", L"tank 2.dat"}) {
        temporary.Write(std::wstring(L"Scales\\") + name, "x");
    }
    const auto dialog = CreateObject<IDispatch>(__uuidof(::CFileDialog));
    Set(dialog.get(), L"DialogTitle", toOpen ? L"Open a parameter file" : L"Save the parameters");
    Set(dialog.get(), L"Filter", L"Parameter files (*.dat)|*.dat|All files|*.*");
    Set(dialog.get(), L"Filename", toOpen ? L"tank 1.dat" : L"tank 3.dat");
    Set(dialog.get(), L"InitialDir", folder.c_str());
    Set(dialog.get(), L"Flags", FleExplorer | FleHideReadOnly);
    Call(dialog.get(), L"Show", {Arg(toOpen)});
}

void ShowPrint() {
    const TestPrinter printer;
    const auto dialog = CreateObject<IDispatch>(__uuidof(::CPrintDialog));
    Set(dialog.get(), L"Flags", priPageNums | priNoSelection);
    Set(dialog.get(), L"FromPage", 1);
    Set(dialog.get(), L"ToPage", 12);
    Set(dialog.get(), L"Max", 12);
    Set(dialog.get(), L"Copies", 1);
    Call(dialog.get(), L"Show");
}

void ShowFont() {
    const auto dialog = CreateObject<_CFontDialog>(__uuidof(::CFontDialog));
    ComPtr<IFontDisp> font;
    dialog->get_Font(font.Receive());
    Let(font.get(), L"Size", {Arg(14.0)});
    Let(font.get(), L"Bold", {Arg(true)});
    Set(dialog.get(), L"Flags", FonScreenFonts | FonInitToLogFontStruct | FonEffects);
    Call(dialog.get(), L"Show");
}

const std::map<std::string, std::function<void()>> kDialogs{
    {"file", [] { ShowFile(true); }}, {"save", [] { ShowFile(false); }}, {"print", ShowPrint}, {"font", ShowFont}};

int Run(const std::string& name, const std::string& stop) {
    const auto dialog = kDialogs.find(name);
    if (dialog == kDialogs.end()) return 2;
    const DialogUser user([&](HWND window) {
        const bool stops = GetFileAttributesA(stop.c_str()) != INVALID_FILE_ATTRIBUTES;
        if (stops) Press(window, IDCANCEL);
        return stops;
    });
    dialog->second();
    return user.sawDialog() ? 0 : 1;
}

}  // namespace
}  // namespace velk::test

int main(int count, char** arguments) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const int result = count == 3 ? velk::test::Run(arguments[1], arguments[2]) : 2;
    CoUninitialize();
    return result;
}
