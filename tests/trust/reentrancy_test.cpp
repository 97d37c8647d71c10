// What a member answers when the client's code ran inside it. That it may run there at all, the walks see.
#include "platform/text.h"
#include "support/event_sink.h"
#include "support/fake.h"
#include "trust/harness.h"

namespace velk::test {
namespace {

class Reentrancy : public testing::Test {
  protected:
    Reentrancy() { EXPECT_EQ(S_OK, crc_->put_InputFileName(Bstr(folder_.Write(L"digits", "123456789")).get())); }
    ~Reentrancy() override {
        crc_ = nullptr;
        EXPECT_TRUE(CanUnload(kMain));
    }

    LONG OfDigits() {
        Bstr digits(L"123456789");
        BSTR raw = digits.get();
        LONG sum = 0;
        EXPECT_EQ(S_OK, crc_.get()->GetCRCFromStringAscii(&raw, &sum));
        return sum;
    }
    LONG OfFile() {
        LONG sum = 99;
        EXPECT_EQ(S_OK, crc_.get()->GetCRCFromFile(&sum));
        return sum;
    }

    const Heap heap_{};
    const ScratchFolder folder_;
    ComPtr<_CCRC32> crc_ = CreateObject<_CCRC32>(__uuidof(CCRC32));
    int boxes_ = 0;
};

TEST_F(Reentrancy, MembersWorkWhileTheReportOfOneIsOpen) {
    const auto missing = CreateObject<_CCRC32>(__uuidof(CCRC32));
    LONG inside = 0, none = 99;
    const OpenBox open([&] {
        if (++boxes_ == 3) return void(inside = OfFile());
        EXPECT_EQ(S_OK, missing->GetCRCFromFile(&none));  // a second box over the first, and a third
    });
    EXPECT_EQ(S_OK, missing->GetCRCFromFile(&none));
    EXPECT_EQ(3, boxes_);
    EXPECT_EQ(0, none);
    EXPECT_EQ(kSumOfDigits, inside);
}

TEST_F(Reentrancy, AClientMayLoadAnotherFileAndLetGoWhileASealIsShown) {
    for (const auto& [stored, result] : {std::pair("0", S_OK),  // without "[END]" the seal is 0
                                         {"1", static_cast<HRESULT>(0x80042715)},
                                         {"no number", static_cast<HRESULT>(0x800A000D)}}) {
        const Bstr path(folder_.Write(L"one", std::string("[BEGIN]\r\n@CRC=") + stored));
        const Bstr longer(folder_.Write(L"other", "[BEGIN]\r\n@CRC=0\r\n" + std::string(5000, 'x')));
        ComPtr<_CDatFile> dat = CreateObject<_CDatFile>(__uuidof(CDatFile));
        const auto load = [called = dat.get()](const Bstr& file) {
            BSTR name = file.get();
            VARIANT_BOOL display = VARIANT_TRUE;
            return called->Initialize(&name, &display);
        };
        const OpenBox open([&, boxes = 0]() mutable {
            if (++boxes == 2) return;
            EXPECT_EQ(S_OK, load(longer));
            dat = nullptr;
        });
        EXPECT_EQ(result, load(path));
        EXPECT_FALSE(dat);
    }
}

TEST_F(Reentrancy, AnObjectThatIsAskedWhoItIsMayLetGoOfWhoAsks) {
    const auto asked = ValueObject::Make(Arg(1L));
    ComPtr<_CLinkedList> list = CreateObject<_CLinkedList>(__uuidof(CLinkedList));
    VARIANT value = Arg(asked.get()), other = Arg(crc_.As<IDispatch>().get());
    LONG found = 0, start = -1;
    EXPECT_EQ(S_OK, list->Add(&value, nullptr, nullptr, &found));
    asked->onQuestion = [&] { list = nullptr; };
    EXPECT_EQ(S_OK, list.get()->Find(&other, nullptr, &start, nullptr, &found));
    EXPECT_EQ(0, found);
    EXPECT_EQ(1u, asked->count());
    EXPECT_FALSE(list);
    const HookLibrary hooks;
    ComPtr<_cIconMenu> menu = CreateObject<_cIconMenu>(__uuidof(cIconMenu));
    asked->onQuestion = [&] { menu = nullptr; };
    EXPECT_EQ(static_cast<HRESULT>(0x800A000D),
              menu.get()->put_CommandPicture(1, reinterpret_cast<IPictureDisp*>(asked.get())));
    EXPECT_FALSE(menu);
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

// With every way out of an event at once: the sink disconnects, lets go of the source and answers with an error; or it
// only lets go, and the source's sinks are destroyed with it.
TEST_F(Reentrancy, ASinkMayEndEverythingItKnows) {
    for (const auto& [disconnects, ofFile] : {std::pair(true, true), {true, false}, {false, true}, {false, false}}) {
        const auto file = folder_.Path(L"digits");
        crc_ = CreateObject<_CCRC32>(__uuidof(CCRC32));
        EXPECT_EQ(S_OK, crc_->put_InputFileName(Bstr(file).get()));
        const auto sink = EventSink::Make();
        std::optional<Connection> connection(std::in_place, crc_.get(), __uuidof(__CCRC32), sink.get());
        sink->answer = E_UNEXPECTED;
        sink->onEvent = [&](VARIANT*) {
            disconnects ? connection->Disconnect() : connection->Forget();
            crc_ = nullptr;
        };
        EXPECT_EQ(kSumOfDigits, ofFile ? OfFile() : OfDigits());
        EXPECT_EQ(disconnects, sink->events.size() == 1);
        EXPECT_EQ(1u, sink->count());
    }
}

// What a member gives besides its result is the client's again as soon as there is a report.
TEST_F(Reentrancy, AMemberDoesNotWriteToTheClientsVariablesAfterAReport) {
    const Fake area("SystemParametersInfoA", &SystemParametersInfoA, [](UINT, UINT, PVOID place, UINT) {
        *static_cast<RECT*>(place) = {-40000, -40000, -39990, -39995};
        return TRUE;
    });
    ComPtr<_COSInfo> info = CreateObject<_COSInfo>(__uuidof(COSInfo));
    std::vector<SHORT> sides(4);
    const OpenBox open([&] {
        ++boxes_;
        info = nullptr;
        sides = {7, 7, 7, 7};
        EXPECT_FALSE(CanUnload(kMain)) << "the member has an object yet";
    });
    EXPECT_EQ(S_OK, info.get()->GetWorkArea(&sides[0], &sides[1], &sides[2], &sides[3]));
    EXPECT_EQ(2, boxes_);
    EXPECT_EQ((std::vector<SHORT>{7, 7, 7, 7}), sides);
}

}  // namespace
}  // namespace velk::test
