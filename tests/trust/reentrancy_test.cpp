// The client's code runs inside the library's members: while a message box is open, in an event, while a default
// property is read. Whatever it does there, the member ends properly.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <set>
#include <vector>

#include "platform/text.h"
#include "support/event_sink.h"
#include "support/fake.h"
#include "support/procedure_patch.h"
#include "support/scoped_variable.h"
#include "trust/attempt.h"
#include "winhelpers/test_bitmaps.h"

namespace velk::test {
namespace {

constexpr LONG kSumOfDigits = -873187034;  // of "123456789"

// Overwrites what the library gives back, so that what still reads it goes astray at once. One at a time.
class UsedAfterFree {
  private:
    static void __cdecl Free(void* block) {
        // Volatile, since the compiler takes out what nobody may read before a free.
        if (block) std::fill_n(static_cast<volatile unsigned char*>(block), _msize(block), 0xDD);
        std::free(block);
    }

    ImportPatch patch_{Library(), "free", reinterpret_cast<void*>(&Free)};
};

// Runs the client's code in place of each message box.
class OpenBox {
  public:
    explicit OpenBox(std::function<void()> whileOpen) { whileOpen_ = std::move(whileOpen); }
    ~OpenBox() { whileOpen_ = nullptr; }

  private:
    static int WINAPI Show(HWND, LPCWSTR, LPCWSTR, UINT) {
        if (whileOpen_) whileOpen_();
        return IDOK;
    }

    static inline std::function<void()> whileOpen_;
    ScopedVariable asBoxes_{L"VELKSPRT_REPORTS", nullptr};
    ImportPatch patch_{Library(), "MessageBoxW", reinterpret_cast<void*>(&Show)};
};

class Reentrancy : public testing::Test {
  protected:
    LONG OfDigits() {
        Bstr digits(L"123456789");
        BSTR raw = digits.get();
        LONG sum = 0;
        EXPECT_EQ(S_OK, crc_->GetCRCFromStringAscii(&raw, &sum));
        return sum;
    }
    LONG OfFile(const wchar_t* name) {
        LONG sum = 99;
        EXPECT_EQ(S_OK, crc_->put_InputFileName(Bstr(folder_.Path(name)).get()));
        EXPECT_EQ(S_OK, crc_->GetCRCFromFile(&sum));
        return sum;
    }

    const UsedAfterFree freed_{};
    const ScratchFolder folder_;
    ComPtr<_CCRC32> crc_ = CreateObject<_CCRC32>(__uuidof(CCRC32));
};

TEST_F(Reentrancy, MembersWorkWhileTheReportOfOneIsOpen) {
    folder_.Write(L"digits", "123456789");
    int boxes = 0;
    LONG inside = 0;
    const OpenBox open([&] {
        if (++boxes == 3) {
            inside = OfFile(L"digits");
        } else {
            EXPECT_EQ(0, OfFile(L"missing"));  // a second box over the first, and a third
        }
    });
    EXPECT_EQ(0, OfFile(L"missing"));
    EXPECT_EQ(3, boxes);
    EXPECT_EQ(kSumOfDigits, inside);
}

// Every member of every class that reports: it is called again, and the last reference to its object goes.
TEST_F(Reentrancy, AClientMayLetGoOfAnObjectWhileItsReportIsOpen) {
    crc_ = nullptr;
    const CalmPlatform calm;
    std::set<std::string> reporting;
    ForEachMember(kMain, [&](const Class& one, const Member& member) {
        for (unsigned seed = 0; seed < 8; ++seed) {
            ComPtr<IDispatch> object = one.MakeObject();
            IDispatch* const raw = object.get();
            engine.seed(seed);
            Client client;
            Request request(member, client, Arguments::Sane);
            const auto call = [&] { return request.SendTo(raw); };
            int boxes = 0;
            const OpenBox open([&] {
                reporting.insert(Where(one, member));
                if (++boxes == 1) call();
                if (boxes <= 2) object = nullptr;
            });
            EXPECT_TRUE(IsProper(call()));
        }
    });
    EXPECT_GE(reporting.size(), 5u);
    EXPECT_TRUE(CanUnload());
}

TEST_F(Reentrancy, AClientMayLoadAnotherFileAndLetGoWhileASealIsShown) {
    // Without "[END]" the seal is 0.
    for (const auto& [stored, result] : {std::pair("0", S_OK),
                                         {"1", static_cast<HRESULT>(0x80042715)},
                                         {"no number", static_cast<HRESULT>(0x800A000D)}}) {
        const Bstr path(folder_.Write(L"one", std::string("[BEGIN]\r\n@CRC=") + stored));
        const Bstr longer(folder_.Write(L"other", "[BEGIN]\r\n@CRC=0\r\n" + std::string(5000, 'x')));
        ComPtr<_CDatFile> dat = CreateObject<_CDatFile>(__uuidof(CDatFile));
        _CDatFile* const called = dat.get();
        int boxes = 0;
        const auto load = [called](const Bstr& file) {
            BSTR name = file.get();
            VARIANT_BOOL display = VARIANT_TRUE;
            return called->Initialize(&name, &display);
        };
        const OpenBox open([&] {
            if (++boxes == 2) return;
            EXPECT_EQ(S_OK, load(longer));
            dat = nullptr;
        });
        EXPECT_EQ(result, load(path));
        EXPECT_EQ(2, boxes);
    }
}

// Another apartment's object, for instance: while it is asked who it is, messages are dispatched.
class Questioned final : public BareDispatch {
  public:
    explicit Questioned(std::function<void()> onQuestion, ComPtr<IPictureDisp> picture = nullptr)
        : onQuestion_(std::move(onQuestion)), picture_(std::move(picture)) {}
    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        onQuestion_();
        return picture_ ? picture_->QueryInterface(iid, object) : BareDispatch::QueryInterface(iid, object);
    }
    STDMETHODIMP Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) noexcept override {
        return DISP_E_MEMBERNOTFOUND;
    }

  private:
    std::function<void()> onQuestion_;
    ComPtr<IPictureDisp> picture_;
};

TEST_F(Reentrancy, APictureThatAMenuAsksMayLetGoOfTheMenu) {
    const HookLibrary hooks;
    HMENU const submenu = CreatePopupMenu();
    crc_ = nullptr;
    const auto put = [&](auto member, LONG key, ComPtr<IPictureDisp> picture) {
        ComPtr<_cIconMenu> menu = CreateObject<_cIconMenu>(__uuidof(cIconMenu));
        const auto given = ComPtr<Questioned>::Attach(new Questioned([&] { menu = nullptr; }, std::move(picture)));
        const HRESULT answer = (menu.get()->*member)(key, reinterpret_cast<IPictureDisp*>(given.get()));
        EXPECT_FALSE(menu);
        EXPECT_TRUE(CanUnload()) << "the menu was destroyed when its member ended";
        return answer;
    };
    for (const auto member : {&_cIconMenu::put_CommandPicture, &_cIconMenu::putref_CommandPicture,
                              &_cIconMenu::put_SubmenuPicture, &_cIconMenu::putref_SubmenuPicture}) {
        EXPECT_EQ(S_OK, put(member, HandleToLong(submenu), PictureOf(NewBitmap(0, 4, 4))));
        EXPECT_EQ(static_cast<HRESULT>(0x800A000D), put(member, HandleToLong(submenu), nullptr));
    }
    DestroyMenu(submenu);
}

TEST_F(Reentrancy, AnObjectThatASearchAsksMayLetGoOfTheList) {
    ComPtr<_CLinkedList> list = CreateObject<_CLinkedList>(__uuidof(CLinkedList));
    _CLinkedList* const called = list.get();
    const auto item = ComPtr<Questioned>::Attach(new Questioned([&] { list = nullptr; }));
    VARIANT value = Arg(item.get()), other = Arg(crc_.As<IDispatch>().get());
    LONG found = 0, start = -1;
    EXPECT_EQ(S_OK, called->Add(&value, nullptr, nullptr, &found));
    EXPECT_EQ(S_OK, called->Find(&other, nullptr, &start, nullptr, &found));
    EXPECT_EQ(0, found);
    EXPECT_EQ(1u, item->count());
}

TEST_F(Reentrancy, ASinkMayComputeWithTheSourceThatCallsItAndPumpMessagesThatDo) {
    const auto sink = EventSink::Make();
    const Connection connection(crc_.get(), __uuidof(__CCRC32), sink.get());
    int depth = 0;
    const TestWindow window(WS_OVERLAPPEDWINDOW, [&](HWND, UINT message, WPARAM, LPARAM) -> std::optional<LRESULT> {
        if (message != WM_APP) return std::nullopt;
        EXPECT_EQ(kSumOfDigits, OfDigits());
        return 0;
    });
    sink->onEvent = [&](VARIANT*) {
        if (depth == 3) return;
        if (++depth == 2) {
            PostMessageW(window.get(), WM_APP, 0, 0);
            PumpMessages();
        } else {
            EXPECT_EQ(kSumOfDigits, OfDigits());
        }
        --depth;
    };
    EXPECT_EQ(kSumOfDigits, OfDigits());
    EXPECT_EQ(10u + 100 + 1000 + 10000, sink->events.size());  // for each byte but the first, at the start and the end
}

// With every way out of an event at once: the sink disconnects, lets go of the source and answers with an error.
TEST_F(Reentrancy, ASinkMayEndEverythingItKnows) {
    folder_.Write(L"digits", "123456789");
    EXPECT_EQ(S_OK, crc_->put_InputFileName(Bstr(folder_.Path(L"digits")).get()));
    Bstr digits(L"123456789");
    BSTR raw = digits.get();
    const std::function<HRESULT(_CCRC32*, LONG*)> computations[] = {
        [&](_CCRC32* crc, LONG* sum) { return crc->GetCRCFromStringAscii(&raw, sum); },
        [](_CCRC32* crc, LONG* sum) { return crc->GetCRCFromFile(sum); }};
    for (const auto& compute : computations) {
        ComPtr<_CCRC32> source = CreateObject<_CCRC32>(__uuidof(CCRC32));
        EXPECT_EQ(S_OK, source->put_InputFileName(Bstr(folder_.Path(L"digits")).get()));
        _CCRC32* const called = source.get();
        const auto sink = EventSink::Make();
        Connection connection(source.get(), __uuidof(__CCRC32), sink.get());
        sink->answer = E_UNEXPECTED;
        sink->onEvent = [&](VARIANT*) {
            connection.Disconnect();
            source = nullptr;
        };
        LONG sum = 0;
        EXPECT_EQ(S_OK, compute(called, &sum));
        EXPECT_EQ(kSumOfDigits, sum);
        EXPECT_EQ(1u, sink->events.size());
        EXPECT_EQ(1u, sink->count());
    }
}

// While an argument's default property is read, the same member and every parameterless one of the object run, and the
// last reference to it goes.
TEST_F(Reentrancy, DefaultPropertiesMayCallTheMemberThatReadsThem) {
    const CalmPlatform calm;
    int calledBack = 0;
    ForEachMember(kMain, [&](const Class& one, const Member& member) {
        if (member.parameters.empty()) return;
        ComPtr<IDispatch> held = one.MakeObject();
        IDispatch* const object = held.get();
        const auto value = ValueObject::Make(Arg(2L));
        std::vector<VARIANT> arguments(member.parameters.size(), Arg(value.get()));
        DISPID put = DISPID_PROPERTYPUT;
        const auto call = [&] {
            DISPPARAMS parameters{arguments.data(), &put, static_cast<UINT>(arguments.size()), member.IsLet()};
            return object->Invoke(member.id, IID_NULL, LOCALE_USER_DEFAULT, member.kind, &parameters, nullptr, nullptr,
                                  nullptr);
        };
        int depth = 0;
        value->onRead = [&] {
            if (depth == 2) return;
            ++depth;
            ++calledBack;
            EXPECT_TRUE(IsProper(call()));
            for (const Member& other : one.members) {
                DISPPARAMS none{};
                if (!other.parameters.empty()) continue;
                EXPECT_TRUE(IsProper(object->Invoke(other.id, IID_NULL, LOCALE_USER_DEFAULT, other.kind, &none, nullptr,
                                                    nullptr, nullptr)));
            }
            if (--depth == 0) held = nullptr;
        };
        EXPECT_TRUE(IsProper(call()));
        value->onRead = nullptr;
    });
    EXPECT_GT(calledBack, 100);
    SetErrorInfo(0, nullptr);
}

DWORD now;
DWORD WINAPI Clock() { return now; }

// These go on with their object after a report.
TEST_F(Reentrancy, AMemberThatGoesOnAfterAReportKeepsItsObject) {
    const ProcedurePatch clock(Library(), "timeGetTime", reinterpret_cast<void*>(&Clock));
    const Fake area("SystemParametersInfoA", &SystemParametersInfoA, [](UINT, UINT, PVOID place, UINT) {
        *static_cast<RECT*>(place) = {-40000, -40000, -39990, -39995};
        return TRUE;
    });
    crc_ = nullptr;
    ComPtr<_CMMTimer> timer;
    ComPtr<_COSInfo> info = CreateObject<_COSInfo>(__uuidof(COSInfo));
    std::vector<SHORT> sides(4);
    int boxes = 0;
    const OpenBox open([&] {
        ++boxes;
        timer = nullptr;
        info = nullptr;
        sides = {7, 7, 7, 7};
        EXPECT_FALSE(CanUnload()) << "the member has an object yet";
    });
    EXPECT_EQ(S_OK, info.get()->GetWorkArea(&sides[0], &sides[1], &sides[2], &sides[3]));
    EXPECT_EQ(2, boxes);
    EXPECT_EQ((std::vector<SHORT>{7, 7, 7, 7}), sides) << "the client's variables are its own again";
    const auto overflowing = [&] {
        timer = CreateObject<_CMMTimer>(__uuidof(CMMTimer));
        now = 0x7FFF'FFFF;
        EXPECT_EQ(S_OK, timer->StartTimer());
        now = 0x8000'0000;
        return timer.get();
    };
    double elapsed = 1;
    EXPECT_EQ(S_OK, overflowing()->get_ElapsedTime(&elapsed));
    EXPECT_EQ(0, elapsed);
    EXPECT_EQ(S_OK, overflowing()->StopTimer());
    EXPECT_EQ(4, boxes);
    EXPECT_TRUE(CanUnload());
}

}  // namespace
}  // namespace velk::test
