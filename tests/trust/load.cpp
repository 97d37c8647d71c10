// Much of everything: many objects, long lists and texts, big files, and a soak over all classes. Prints what the first
// and the last part cost; ends with 1 when something is wrong or memory grows. trust_load [MINUTES of the soak]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>

#include "frame/text.h"
#include "support/client.h"
#include "support/gdi_objects.h"
#include "support/late_bound.h"
#include "support/malloc_spy.h"
#include "support/scratch_folder.h"
#include "trust/attempt.h"
#include "trust/calm_platform.h"
#include "trust/scale.h"

namespace velk::test {
namespace {

using Clock = std::chrono::steady_clock;
int failures = 0;

void Require(bool holds, const char* what) {
    if (holds) return;
    std::printf("FAILED: %s\n", what);
    if (++failures == 10) std::exit(1);
}

double NanosecondsOf(int count, const std::function<void()>& work) {
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double, std::nano>(Clock::now() - start).count() / count;
}

// Ten equal parts; what one operation of the first and of the last costs.
void Measure(const char* what, int count, const std::function<void(int)>& operate) {
    double first = 0, last = 0;
    for (int part = 0; part < 10; ++part) {
        last = NanosecondsOf(count / 10, [&] {
            for (int i = count / 10 * part; i < count / 10 * (part + 1); ++i) operate(i);
        });
        if (part == 0) first = last;
    }
    char text[80];
    std::snprintf(text, sizeof text, "%.0f ns each in the first tenth, %.0f ns in the last", first, last);
    Tell(what, text);
}

void ManyObjects() {
    const std::vector<Class> classes = ReadClasses(kMain);
    std::vector<ComPtr<IDispatch>> objects;
    Measure("10,000 live objects of mixed classes, creation", 10'000, [&](int i) {
        objects.push_back(classes[static_cast<std::size_t>(i) % classes.size()].MakeObject());
        Require(static_cast<bool>(objects.back()), "an object");
    });
    Measure("10,000 live objects, release", 10'000, [&](int i) { objects[static_cast<std::size_t>(i)] = nullptr; });
    Require(CanUnload(), "nothing is held");
}

void LongList() {
    constexpr int kItems = 10'000'000;
    const auto list = CreateObject<_CLinkedList>(__uuidof(CLinkedList));
    LONG none = 0, index = 0, room = kItems + 1;
    Require(list->SetSize(&room, nullptr) == S_OK, "the list has room");  // growing would put it in disorder
    Measure("List of 10 million items, adding", kItems, [&](int i) {
        VARIANT value = Arg(static_cast<LONG>(i));
        Require(list->Add(&value, &none, &none, &index) == S_OK, "an item is added");
    });
    LONG count = 0;
    list->get_Count(&count);
    Require(count == kItems, "all items are there");
    Measure("List of 10 million items, reading while moving through it", kItems, [&](int i) {
        Variant value;
        if (i == 0) list->MoveFirst();
        list->get_Item(&none, &value);
        Require(value.vt == VT_I4 && value.lVal == i, "the item is the one that was added");
        if (i < kItems - 1) list->MoveNext();
    });
}

void LongText() {
    constexpr int kPieces = 2'000'000;
    const auto builder = CreateObject<_CConCat>(__uuidof(CConCat));
    Bstr piece(std::wstring(100, L'x'));
    BSTR raw = piece.get();
    Measure("Builder of 200 million characters, appending 100", kPieces,
            [&](int) { Require(builder->Append(&raw) == S_OK, "a piece is appended"); });
    LONG length = 0;
    builder->get_Length(&length);
    Require(length == kPieces * 100, "all characters are there");
    Bstr text;
    Require(builder->get_Text(text.Receive()) == S_OK, "the text is handed over");
    Require(SysStringLen(text.get()) == kPieces * 100, "the text is whole");
}

void BigIniFile() {
    const ScratchFolder folder;
    std::string text = "[Section]\r\n";
    for (int i = 0; text.size() < 60'000; ++i) text += "Key" + std::to_string(i) + "=" + std::to_string(i) + "\r\n";
    const auto file = CreateObject<IDispatch>(__uuidof(CIniFile));
    const Variant path = Text(folder.Write(L"big.ini", text).c_str()), section = Text(L"Section");
    Require(Call(file.get(), L"Init", {path}).result == S_OK, "the file is opened");
    Measure("INI file of 60,000 bytes with 4,000 keys, reading one", 1000, [&](int i) {
        const Variant key = Text((L"Key" + std::to_wstring(i * 3)).c_str());
        const Outcome read = Call(file.get(), L"GetStringValue", {section, key});
        Require(TextOf(read.value) == std::to_wstring(i * 3), "the key's value");
    });
}

void BigSealedFile() {
    const ScratchFolder folder;
    std::string text = "[BEGIN]\r\n";
    for (int i = 0; text.size() < 100'000'000; ++i) {
        text += "PARAMETER." + std::to_string(i) + ".HR=" + std::string(1000, 'v') + "\r\n";
    }
    text += "[END]\r\n";
    LONG seal = 0;
    {
        const auto crc = CreateObject<_CCRC32>(__uuidof(CCRC32));
        Bstr region(std::wstring(text.begin(), text.end() - 6));
        BSTR raw = region.get();
        Require(crc->GetCRCFromString(&raw, &seal) == S_OK, "the seal");
    }
    const Variant path = Text(folder.Write(L"big.dat", text + "@CRC=" + std::to_string(seal) + "\r\n").c_str());
    text = {};
    const auto file = CreateObject<IDispatch>(__uuidof(CDatFile));
    Outcome opened;
    const double time = NanosecondsOf(1, [&] { opened = Call(file.get(), L"Initialize", {path}); });
    Require(opened.result == S_OK, "the sealed file is opened");
    const Variant name = Text(L"PARAMETER.90000");
    Let(file.get(), L"Parameter", {name});
    Require(TextOf(Call(file.get(), L"GetHumanReadable").value).size() == 1000, "a value of the sealed file");
    Tell("Sealed file of 100 MB, opened and checked in", std::to_string(static_cast<int>(time / 1e6)) + " ms");
}

SIZE_T CommittedBytes() {
    SIZE_T bytes = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region);) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += region.RegionSize;
        const char* const next = static_cast<const char*>(region.BaseAddress) + region.RegionSize;
        if (next <= at) break;
        at = next;
    }
    return bytes;
}

void Soak(double minutes) {
    const CalmPlatform calm;
    unsigned round = 0;
    const auto run = [&] {
        ForEachMember(kMain, [&](const Class& one, const Member& member) { Attempt(one, member, round % 50).Make(); });
        ++round;
    };
    for (int warmUp = 0; warmUp < 50; ++warmUp) run();
    const LONG blocks = MallocSpy::Alive();
    const std::size_t handles = OpenHandles();
    const int drawing = GdiObjects();
    const SIZE_T memory = CommittedBytes();
    const auto end = Clock::now() + std::chrono::duration<double, std::ratio<60>>(minutes);
    double first = 0, last = 0;
    unsigned rounds = 0;
    for (; Clock::now() < end; rounds += 50) {
        last = NanosecondsOf(50, [&] {
            for (int i = 0; i < 50; ++i) run();
        });
        if (first == 0) first = last;
    }
    Require(blocks == MallocSpy::Alive(), "strings, arrays and task memory stay flat");
    Require(handles == OpenHandles(), "handles stay flat");
    Require(drawing == GdiObjects(), "drawing objects stay flat");
    const auto grown = static_cast<long>(CommittedBytes()) - static_cast<long>(memory);
    Require(grown < 4'000'000, "memory stays flat");
    char text[160];
    std::snprintf(text, sizeof text, "%u rounds, %.1f ms a round at first, %.1f ms at the end, memory %+ld KB", rounds,
                  first / 1e6, last / 1e6, grown / 1024);
    Tell("Soak of " + std::to_string(static_cast<int>(minutes * 60)) + " s over all members", text);
}

}  // namespace
}  // namespace velk::test

int main(int count, char** arguments) {
    using namespace velk::test;
    std::setvbuf(stdout, nullptr, _IONBF, 0);
    testing::InitGoogleTest(&count, arguments);
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    ManyObjects();
    LongList();
    LongText();
    BigIniFile();
    BigSealedFile();
    Soak(count > 1 ? std::atof(arguments[1]) : 1);
    CoUninitialize();
    return failures > 0;
}
