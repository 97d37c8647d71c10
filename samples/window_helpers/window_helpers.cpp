// A form that stays between 320 x 200 and 720 x 480 pixels, with a list view whose columns follow its width and cannot
// be dragged. Early bound, from the headers that the type libraries give.
//
// Needs no registration: VelkSprt.dll, VelkSub.dll and their manifests lie beside the program, whose own manifest names
// them. It prints its list view's handle, for window_helpers.js. Start it with a width and a height to see that size
// tried; a third number ends it after so many milliseconds.
#include <windows.h>

#include <commctrl.h>
#include <ole2.h>
#include <cstdio>
#include <cstdlib>

#include "velksprt.h"

namespace {

constexpr LONG kListView = 1;

struct Form {
    HWND window = nullptr;
    HWND list = nullptr;
    _CFormSizeConstraint* limits = nullptr;
    _CListViewExtended* columns = nullptr;
};

void Say(const char* what, HRESULT result) {
    if (FAILED(result)) std::printf("%s failed: 0x%08lX\n", what, static_cast<unsigned long>(result));
}

template <class Interface>
Interface* Create(const char* name, REFCLSID clsid) {
    void* object = nullptr;
    Say(name, CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, __uuidof(Interface), &object));
    return static_cast<Interface*>(object);
}

void FillList(HWND list) {
    const wchar_t* const titles[] = {L"Parameter", L"Value", L"Meaning"};
    const wchar_t* const rows[][3] = {{L"WT.GROSS", L"1284.5", L"Gross weight, kg"},
                                      {L"WT.TARE", L"84.5", L"Tare, kg"},
                                      {L"WT.NET", L"1200.0", L"Net weight, kg"},
                                      {L"SCALE.MAX", L"3000", L"Capacity, kg"}};
    LVCOLUMNW column{};
    column.mask = LVCF_TEXT | LVCF_WIDTH;
    for (int i = 0; i < 3; ++i) {
        column.pszText = const_cast<LPWSTR>(titles[i]);
        column.cx = i == 2 ? 200 : 100;
        SendMessageW(list, LVM_INSERTCOLUMNW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&column));
    }
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    for (const auto& row : rows) {
        for (item.iSubItem = 0; item.iSubItem < 3; ++item.iSubItem) {
            item.pszText = const_cast<LPWSTR>(row[item.iSubItem]);
            const UINT message = item.iSubItem == 0 ? LVM_INSERTITEMW : LVM_SETITEMW;
            SendMessageW(list, message, 0, reinterpret_cast<LPARAM>(&item));
        }
        ++item.iItem;
    }
}

void LimitSize(Form& form) {
    form.limits = Create<_CFormSizeConstraint>("CFormSizeConstraint", __uuidof(CFormSizeConstraint));
    if (!form.limits) return;
    LONG least[] = {320, 200}, most[] = {720, 480}, window = HandleToLong(form.window);
    form.limits->put_MinWidth(&least[0]);
    form.limits->put_MinHeight(&least[1]);
    form.limits->put_MaxWidth(&most[0]);
    form.limits->put_MaxHeight(&most[1]);
    Say("CFormSizeConstraint.Init", form.limits->Init(&window));
}

void StretchColumns(Form& form) {
    form.columns = Create<_CListViewExtended>("CListViewExtended", __uuidof(CListViewExtended));
    if (!form.columns) return;
    VARIANT_BOOL yes = VARIANT_TRUE;
    LONG list = HandleToLong(form.list);
    form.columns->put_ResizeColumnsToFitWidth(&yes);
    form.columns->put_PreventColumnResize(&yes);
    Say("CListViewExtended.Init", form.columns->Init(&list));
    // PreventColumnResize holds back what a header says in the ANSI forms.
    const auto header = reinterpret_cast<HWND>(SendMessageW(form.list, LVM_GETHEADER, 0, 0));
    SendMessageW(header, HDM_SETUNICODEFORMAT, FALSE, 0);
}

void PrintColumns(const Form& form) {
    std::printf(", columns");
    for (WPARAM i = 0; i < 3; ++i) {
        std::printf(" %d", static_cast<int>(SendMessageW(form.list, LVM_GETCOLUMNWIDTH, i, 0)));
    }
    std::printf("\n");
}

LRESULT CALLBACK FormProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    const auto* const form = reinterpret_cast<const Form*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    switch (message) {
        case WM_SIZE:
            if (form) SetWindowPos(form->list, nullptr, 0, 0, LOWORD(lParam), HIWORD(lParam), SWP_NOZORDER);
            return 0;
        case WM_TIMER:
            std::printf("at the end");
            PrintColumns(*form);
            DestroyWindow(window);
            return 0;
        case WM_DESTROY:
            PostQuitMessage(0);
            return 0;
        default:
            return DefWindowProcW(window, message, wParam, lParam);
    }
}

void MakeForm(Form& form) {
    WNDCLASSW description{};
    description.lpfnWndProc = FormProcedure;
    description.hInstance = GetModuleHandleW(nullptr);
    description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    description.lpszClassName = L"WindowHelpersSample";
    RegisterClassW(&description);
    form.window = CreateWindowExW(0, description.lpszClassName, L"Window helpers", WS_OVERLAPPEDWINDOW, 40, 40, 420,
                                  260, nullptr, nullptr, description.hInstance, nullptr);
    form.list =
        CreateWindowExW(0, WC_LISTVIEWW, L"", WS_CHILD | WS_VISIBLE | LVS_REPORT, 0, 0, 10, 10, form.window,
                        reinterpret_cast<HMENU>(static_cast<LONG_PTR>(kListView)), description.hInstance, nullptr);
    SetWindowLongPtrW(form.window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&form));
    FillList(form.list);
}

// Asks for a size and tells what came of it.
void Try(const Form& form, int width, int height) {
    SetWindowPos(form.window, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER);
    RECT is{};
    GetWindowRect(form.window, &is);
    std::printf("asked for %d x %d, is %ld x %ld", width, height, is.right - is.left, is.bottom - is.top);
    PrintColumns(form);
}

}  // namespace

int main(int count, char** arguments) {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    InitCommonControls();
    Form form;
    MakeForm(form);
    LimitSize(form);
    StretchColumns(form);
    ShowWindow(form.window, SW_SHOW);
    std::printf("list view %ld\n", HandleToLong(form.list));
    if (count >= 3) Try(form, std::atoi(arguments[1]), std::atoi(arguments[2]));
    std::fflush(stdout);
    if (count == 4) SetTimer(form.window, 1, static_cast<UINT>(std::atoi(arguments[3])), nullptr);
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    if (form.limits) form.limits->Release();
    if (form.columns) form.columns->Release();
    CoUninitialize();
    return 0;
}
