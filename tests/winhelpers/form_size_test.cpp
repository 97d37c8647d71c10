#include <gtest/gtest.h>

#include <array>
#include <utility>

#include "winhelpers/hooked_fixture.h"

namespace velk::test {
namespace {

constexpr std::pair<HRESULT, const wchar_t*> kFailure{eErrFormSizeConstraint_ComponentFailure,
                                                      L"CFormSizeConstraint component failure"};
using Form = ComPtr<_CFormSizeConstraint>;
using Record = std::array<LONG, 10>;
static_assert(sizeof(Record) == sizeof(MINMAXINFO));

Form NewForm(const std::array<LONG, 4>& limits = {250, 180, 350, 240}) {
    Form made = CreateObject<_CFormSizeConstraint>(__uuidof(CFormSizeConstraint));
    for (const std::size_t i : {0, 1, 2, 3}) {  // as the record has them
        const wchar_t* const names[] = {L"MinWidth", L"MinHeight", L"MaxWidth", L"MaxHeight"};
        if (limits[i]) Let(made.get(), names[i], {Arg(limits[i])});
    }
    return made;
}

class FormSize : public testing::Test {
  protected:
    void Init(LONG on) { EXPECT_EQ(S_OK, Call(form.get(), L"Init", {Arg(on)}).result); }
    static SIZE Resized(HWND window, int width = 0, int height = 0) {
        if (width) SetWindowPos(window, nullptr, 0, 0, width, height, SWP_NOZORDER | SWP_NOMOVE);
        RECT is{};
        GetWindowRect(window, &is);
        return {is.right - is.left, is.bottom - is.top};
    }
    HookLibrary library;
    TestWindow window;
    Form form = NewForm();
};

TEST_F(FormSize, ChangesOnlyTheLimitsThatAreSet) {
    for (unsigned set = 0; set < 16; ++set) {
        std::array<LONG, 4> limits{};
        Record record{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}, expected = record;
        for (unsigned i = 0; i < 4; ++i) {
            if (set & 1u << i) expected[6 + i] = limits[i] = static_cast<LONG>(100 + i);
        }
        LONG_PTR result = 1;
        const auto hook = NewForm(limits).As<ISubclass2>();
        EXPECT_EQ(S_OK, hook->WindowProcPtr(0, 0, 0, reinterpret_cast<LPARAM>(record.data()), &result));
        EXPECT_EQ(expected, record) << set;
        EXPECT_EQ(0, result);
    }
}

// A user who pulls the right border: a modal loop, which takes what is posted with the pointer's place at that time.
TEST_F(FormSize, HoldsAgainstADragOfTheBorder) {
    const RelocatedRecords relocated(window.get());
    ShowWindow(window.get(), SW_SHOW);
    for (const auto& [distance, width] : {std::pair{200, 350}, {-200, 250}, {30, 280}}) {
        PumpMessages();
        RECT is{};
        GetWindowRect(window.get(), &is);
        const auto post = [&](UINT message, int by) {
            SetCursorPos(is.right - 2 + by, (is.top + is.bottom) / 2);
            PostMessageW(window.get(), message, 0, 0);
        };
        post(WM_NULL, 0);
        PumpMessages();
        for (int i = 1; i <= 10; ++i) post(WM_MOUSEMOVE, distance * i / 10);
        post(WM_LBUTTONUP, distance);
        Init(window.handle());
        SendMessageW(window.get(), WM_SYSCOMMAND, SC_SIZE | WMSZ_RIGHT, 0);
        // The platform confines the pointer instead of the window, which may leave a pixel over.
        EXPECT_NEAR(width, Resized(window.get()).cx, 1);
    }
}

// Maximised children of a multiple-document frame.
TEST_F(FormSize, HoldsForChildrenOfAFrame) {
    CLIENTCREATESTRUCT given{nullptr, 1};
    const HWND client = CreateWindowExW(0, L"MDICLIENT", L"", WS_CHILD | WS_VISIBLE, 0, 0, 800, 600, window.get(),
                                        nullptr, nullptr, &given);
    WNDCLASSW description{};
    description.lpfnWndProc = DefMDIChildProcW;
    description.lpszClassName = L"VelkTestChild";
    RegisterClassW(&description);
    const HWND child = CreateWindowExW(WS_EX_MDICHILD, description.lpszClassName, L"", 0, 0, 0, 300, 200, client,
                                       nullptr, nullptr, nullptr);
    Init(HandleToLong(child));
    EXPECT_EQ(250, Resized(child, 100, 200).cx);
    EXPECT_EQ(240, Resized(child, 900, 700).cy);
    for (const UINT message : {WM_MDIMAXIMIZE, WM_MDIRESTORE}) {
        SendMessageW(client, message, reinterpret_cast<WPARAM>(child), 0);
    }
    EXPECT_EQ(350, Resized(child).cx);
}

TEST_F(FormSize, IsAHookWithADispatchOfItsOwn) {
    const auto hook = form.As<ISubclass>();
    EXPECT_EQ(form.As<IUnknown>().get(), hook.As<IUnknown>().get());
    EXPECT_EQ(form.As<IUnknown>().get(), hook.As<ISubclass2>().As<IUnknown>().get());
    EXPECT_EQ(form.get(), hook.As<IDispatch>().get()) << "the default interface";
    for (const IID& iid : {__uuidof(ISubclass), __uuidof(ISubclass2)}) {
        EXPECT_EQ(S_OK, form.As<ISupportErrorInfo>()->InterfaceSupportsErrorInfo(iid));
    }
    EXPECT_EQ(eMsgResponse_PreviousFirst, Get(hook.get(), L"MsgResponse").value.lVal);
    const auto* const record = static_cast<const MINMAXINFO*>(MemoryAt(0x30000000));
    const LONG address = PtrToLong(record);
    EXPECT_EQ(0, Call(hook.get(), L"WindowProc", {Arg(0L), Arg(1L), Arg(2L), Arg(address)}).value.lVal);
    EXPECT_EQ(250, record->ptMinTrackSize.x);
    EXPECT_EQ(DISPID_UNKNOWN, IdOf(hook.get(), L"MaxWidth"));
    EXPECT_EQ(DISPID_UNKNOWN, IdOf(form.get(), L"WindowProc"));
    LONG result = 1;
    EXPECT_EQ(kFailure.first, hook->WindowProc(0, WM_GETMINMAXINFO, 0, 0, &result)) << "no record";
    EXPECT_EQ(E_POINTER, hook->WindowProc(0, WM_GETMINMAXINFO, 0, address, nullptr));
    VirtualFree(const_cast<MINMAXINFO*>(record), 0, MEM_RELEASE);
    ComPtr<ITypeInfo> info;
    EXPECT_EQ(S_OK, hook->GetTypeInfo(0, 0, info.Receive())) << "described without the hook library";
}

TEST(HookingAlone, FailsOrNotAndSaysOnceWhatIsMissing) {
    for (const bool list : {false, true}) {
        const NoHookLibrary none;
        const TestWindow window;
        const auto made = CreateObject<IDispatch>(list ? __uuidof(CListViewExtended) : __uuidof(CFormSizeConstraint));
        for (int i = 0; i < 2; ++i) {
            const Outcome outcome = Call(made.get(), L"Init", {Arg(window.handle())});
            if (!list) ExpectRaised(outcome, kFailure, L"VelkSprt.CFormSizeConstraint");
            EXPECT_EQ(list, outcome.result == S_OK);
        }
        EXPECT_EQ(window.handle(), Get(made.get(), L"hWnd").value.lVal);
        const std::wstring said =
            L"VelkSprt: VelkSub.HookManager cannot be created (0x80040154), windows are not hooked. Is VelkSub.dll "
            L"registered?\n";
        EXPECT_EQ(said, none.said());
    }
    EXPECT_TRUE(CanUnload());
}

}  // namespace
}  // namespace velk::test
