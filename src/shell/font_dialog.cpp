#include "shell/font_dialog.h"

#include <commdlg.h>

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "platform/drawing_handles.h"
#include "platform/long_handles.h"
#include "platform/text.h"
#include "platform/whole_numbers.h"
#include "shell/common_dialogs.h"
#include "shell/font_height.h"

namespace velk {

// The platform's LOGFONTA with a face of 33 bytes instead of 32 and an end behind it: a name that fills the face is
// still a text with an end for whoever reads it.
struct FontRecord {
    LONG height, width, escapement, orientation, weight;
    BYTE italic, underline, strikeOut, charSet, outPrecision, clipPrecision, quality, pitchAndFamily;
    char face[33];
    char end[3];
};

namespace {

static_assert(sizeof(void*) != 4 || sizeof(CHOOSEFONTA) == 60);
static_assert(offsetof(FontRecord, italic) == offsetof(LOGFONTA, lfItalic));
static_assert(offsetof(FontRecord, face) == offsetof(LOGFONTA, lfFaceName));

// From the factory of the library that has it, which this one is linked to: finding that one through the registry takes
// thirty times as long as making the font.
ComPtr<IFont> NewFont() {
    using GetFactory = std::remove_pointer_t<LPFNGETCLASSOBJECT>;
    const auto find = FindFunction<GetFactory>(GetModuleHandleW(L"oleaut32.dll"), "DllGetClassObject");
    if (!find) throw RuntimeError(Error::CannotCreateObject);
    ComPtr<IClassFactory> factory;
    ComPtr<IFont> font;
    ThrowIfFailed(find(CLSID_StdFont, IID_IClassFactory, factory.ReceiveVoid()));
    ThrowIfFailed(factory->CreateInstance(nullptr, IID_IFont, font.ReceiveVoid()));
    return font;
}

constexpr LONG kUnitsPerPoint = 10000;  // of the currency type, in which a font object keeps its size

template <class T>
T Read(IFont& font, HRESULT (STDMETHODCALLTYPE IFont::*get)(T*)) {
    T value{};
    ThrowIfFailed((font.*get)(&value));
    return value;
}

Bstr NameOf(IFont& font) {
    Bstr name;
    ThrowIfFailed(font.get_Name(name.Receive()));
    return name;
}

SHORT PointsOf(IFont& font) {
    return RoundToInteger(static_cast<double>(Read(font, &IFont::get_Size).int64) / kUnitsPerPoint);
}

int ScreenDotsPerInch() noexcept {
    const ScreenContext screen(GetDC(nullptr));
    return GetDeviceCaps(screen.get(), LOGPIXELSY);
}

// The default printer stands in the user's profile as "name,driver,port". Nothing without a printer.
CreatedContext DefaultPrinter() {
    char device[512] = "";
    GetProfileStringA("windows", "device", "", device, sizeof(device));
    char* const driver = std::strchr(device, ',');
    if (!driver) return CreatedContext();
    *driver = '\0';
    if (char* const port = std::strchr(driver + 1, ',')) *port = '\0';
    return CreatedContext(CreateDCA(driver + 1, device, nullptr, nullptr));
}

}  // namespace

constinit const ClassInfo CFontDialog::kInfo{
    .name = L"CFontDialog",
    .clsid = __uuidof(::CFontDialog),
    .iid = __uuidof(_CFontDialog),
    .policy = FailurePolicy::Report,
    .creationFailed = L"An error has occured in VelkSupport.CFontDialog.Class_Initialize ",
};

void CFontDialog::OnCreate() { font_ = NewFont(); }

STDMETHODIMP CFontDialog::get_Color(LONG* result) noexcept { return Get(result, color_); }

STDMETHODIMP CFontDialog::put_Color(LONG* Value) noexcept { return Let(Value, color_); }

STDMETHODIMP CFontDialog::put_Flags(EnumFonFlags* Value) noexcept { return Let(Value, flags_); }

STDMETHODIMP CFontDialog::get_Flags(EnumFonFlags* result) noexcept { return Get(result, flags_); }

STDMETHODIMP CFontDialog::get_Font(IFontDisp** result) noexcept {
    return Guard(result, [&] {
        OwnFont();
        return font_.As<IFontDisp>();
    });
}

STDMETHODIMP CFontDialog::get_FontType(EnumFonFontType* result) noexcept {
    return Guard(result, [] { return EnumFonFontType{}; });
}

STDMETHODIMP CFontDialog::get_hWndParent(LONG* result) noexcept { return Get(result, hWndParent_); }

STDMETHODIMP CFontDialog::put_hWndParent(LONG* Value) noexcept { return Let(Value, hWndParent_); }

STDMETHODIMP CFontDialog::get_Max(SHORT* result) noexcept { return Get(result, max_); }

STDMETHODIMP CFontDialog::put_Max(SHORT* Value) noexcept { return Let(Value, max_); }

STDMETHODIMP CFontDialog::get_Min(SHORT* result) noexcept { return Get(result, min_); }

STDMETHODIMP CFontDialog::put_Min(SHORT* Value) noexcept { return Let(Value, min_); }

STDMETHODIMP CFontDialog::get_Style(BSTR* result) noexcept { return Get(result, style_); }

STDMETHODIMP CFontDialog::put_Style(BSTR* Value) noexcept { return Let(Value, style_); }

STDMETHODIMP CFontDialog::Show(VARIANT_BOOL* result) noexcept {
    return Guard(result, [&] {
        FontRecord record = Describe();
        LONG color = color_;
        if (!Choose(record, color)) return false;
        *result = VARIANT_TRUE;  // whatever fails from here on, the user confirmed
        TakeOver(record);
        color_ = color;
        return true;
    });
}

IFont& CFontDialog::OwnFont() const {
    if (!font_) throw RuntimeError(Error::ObjectNotSet);
    return *font_.get();
}

FontRecord CFontDialog::Describe() const {
    IFont& font = OwnFont();
    FontRecord record{};
    record.weight = Read(font, &IFont::get_Bold) ? FW_BOLD : FW_NORMAL;
    const std::string face = ToAnsi(View(NameOf(font).get()));
    if (face.size() > sizeof(record.face)) throw RuntimeError(Error::SubscriptOutOfRange);
    face.copy(record.face, face.size());
    record.italic = Read(font, &IFont::get_Italic) != FALSE;
    record.underline = Read(font, &IFont::get_Underline) != FALSE;
    record.strikeOut = Read(font, &IFont::get_Strikethrough) != FALSE;
    record.height = PointsToHeight(PointsOf(font));
    return record;
}

bool CFontDialog::Choose(FontRecord& record, LONG& color) const {
    const CreatedContext printer = DefaultPrinter();
    CHOOSEFONTA chooser{};
    chooser.lStructSize = sizeof(chooser);
    chooser.nSizeMin = min_;
    chooser.nSizeMax = max_;
    chooser.rgbColors = static_cast<COLORREF>(color);
    chooser.Flags = static_cast<DWORD>(flags_);
    chooser.hwndOwner = WindowFrom(hWndParent_);
    chooser.hDC = printer.get();
    chooser.lpLogFont = reinterpret_cast<LOGFONTA*>(&record);
    const auto choose = comdlg32.Find<decltype(ChooseFontA)>("ChooseFontA");
    if (choose(&chooser) <= 0) return false;  // Wine answers -1 when it cannot make the dialog
    color = static_cast<LONG>(chooser.rgbColors);
    return true;
}

// The weight is written last: setting Bold sets a weight of its own.
void CFontDialog::TakeOver(const FontRecord& record) const {
    IFont& font = OwnFont();
    const Bstr name = FromAnsiBuffer({record.face, sizeof(record.face)});
    ThrowIfFailed(font.put_Name(name.get()));
    ThrowIfFailed(font.put_Bold(record.weight == FW_BOLD));
    ThrowIfFailed(font.put_Italic(record.italic != 0));
    ThrowIfFailed(font.put_Strikethrough(record.strikeOut != 0));
    ThrowIfFailed(font.put_Underline(record.underline != 0));
    CY size;
    size.int64 = LONGLONG{HeightToPoints(record.height)} * kUnitsPerPoint;
    ThrowIfFailed(font.put_Size(size));
    ThrowIfFailed(font.put_Weight(ToInteger(record.weight)));
}

SHORT CFontDialog::PointsToHeight(SHORT points) const noexcept {
    SHORT height = 0;
    Guard([&] { height = font_height::FromPoints(points, font_height::PixelsPerInch(ScreenDotsPerInch())); });
    return height;
}

SHORT CFontDialog::HeightToPoints(LONG height) const noexcept {
    SHORT points = 0;
    Guard([&] { points = font_height::ToPoints(height, font_height::PixelsPerInch(ScreenDotsPerInch())); });
    return points;
}

}  // namespace velk
