// Much of everything: many objects, long lists and texts, big files, and a soak over all classes. What an operation
// costs must not grow on the way; tools/quality/trust collects the figures, and the charts when VELK_CHARTS names a
// folder.
#include <algorithm>
#include <chrono>

#include "bench/chart.h"
#include "platform/text.h"
#include "trust/attempt.h"
#include "trust/scale.h"

namespace velk::test {
namespace {

using Clock = std::chrono::steady_clock;
using bench::Chart;
using Points = std::vector<Chart::Point>;

template <class Work>
double NanosecondsOf(int count, Work&& work) {
    const auto start = Clock::now();
    work();
    return std::chrono::duration<double, std::nano>(Clock::now() - start).count() / count;
}

template <class... Values>
std::string Format(const char* format, Values... values) {
    char text[200];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

void Write(const Chart& chart, const char* name) {
    if (const char* const folder = std::getenv("VELK_CHARTS")) {
        EXPECT_TRUE(chart.Write((std::string(folder) + "/" + name).c_str()));
    }
}

// Of the first or the last third: what other programs take away only adds.
double LeastOf(const Points& points, bool last) {
    const auto third = static_cast<std::ptrdiff_t>((points.size() + 2) / 3);
    const auto begin = last ? points.end() - third : points.begin();
    return std::min_element(begin, begin + third, [](auto& a, auto& b) { return a.y < b.y; })->y;
}

class Load : public testing::Test {
  protected:
    static void TearDownTestSuite() { Write(chart_, "trust-load.svg"); }

    // Ten equal parts; what one operation costs in each. An operation says whether it went right.
    template <class Operation>
    void Measure(const char* what, int count, Operation&& operate) {
        Points tenths;
        int wrong = 0;
        for (int part = 0; part < 10; ++part) {
            const double cost = NanosecondsOf(count / 10, [&] {
                for (int i = count / 10 * part; i < count / 10 * (part + 1); ++i) wrong += !operate(i);
            });
            tenths.push_back({part + 1.0, cost});
        }
        EXPECT_EQ(0, wrong) << what;
        EXPECT_LT(LeastOf(tenths, true), 3 * LeastOf(tenths, false)) << what;
        Tell(what, Format("%.0f ns each in the first third, %.0f ns in the last", LeastOf(tenths, false),
                          LeastOf(tenths, true)));
        chart_.Add(what, std::move(tenths));
    }

  private:
    static inline Chart chart_{"What one operation costs on the way to the full load",
                               {"tenth of the way", 0, 10, 1},
                               {"ns an operation", 10, 1e5}};
};

TEST_F(Load, ManyObjects) {
    const std::vector<Class>& classes = ReadClasses(kMain);
    std::vector<ComPtr<IDispatch>> objects;
    Measure("10,000 live objects of mixed classes, creation", 10'000, [&](int i) {
        objects.push_back(classes[static_cast<std::size_t>(i) % classes.size()].MakeObject());
        return static_cast<bool>(objects.back());
    });
    Measure("10,000 live objects, release", 10'000, [&](int i) {
        objects[static_cast<std::size_t>(i)] = nullptr;
        return true;
    });
    EXPECT_TRUE(CanUnload());
}

TEST_F(Load, LongList) {
    constexpr int kItems = 10'000'000;
    const auto list = CreateObject<_CLinkedList>(__uuidof(CLinkedList));
    LONG none = 0, index = 0, room = kItems + 1;
    ASSERT_EQ(S_OK, list->SetSize(&room, nullptr));  // growing would put it in disorder
    Measure("List of 10 million items, adding", kItems, [&](int i) {
        VARIANT value = Arg(static_cast<LONG>(i));
        return list->Add(&value, &none, &none, &index) == S_OK;
    });
    list->MoveFirst();
    Measure("List of 10 million items, reading while moving through it", kItems, [&](int i) {
        Variant value;
        list->get_Item(&none, &value);
        if (i < kItems - 1) list->MoveNext();
        return value.vt == VT_I4 && value.lVal == i;
    });
}

TEST_F(Load, LongText) {
    constexpr int kPieces = 2'000'000;
    const auto builder = CreateObject<_CConCat>(__uuidof(CConCat));
    Bstr piece(std::wstring(100, L'x'));
    BSTR raw = piece.get();
    Measure("Builder of 200 million characters, appending 100", kPieces,
            [&](int) { return builder->Append(&raw) == S_OK; });
    Bstr text;
    ASSERT_EQ(S_OK, builder->get_Text(text.Receive()));
    EXPECT_EQ(kPieces * 100u, SysStringLen(text.get()));
}

TEST_F(Load, BigSealedFile) {
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
        ASSERT_EQ(S_OK, crc->GetCRCFromString(&raw, &seal));
    }
    const Variant path = Text(folder.Write(L"big.dat", text + "@CRC=" + std::to_string(seal) + "\r\n").c_str());
    text = {};
    const auto file = CreateObject<IDispatch>(__uuidof(CDatFile));
    const double time = NanosecondsOf(1, [&] { EXPECT_EQ(S_OK, Call(file.get(), L"Initialize", {path}).result); });
    const Variant name = Text(L"PARAMETER.90000");
    Let(file.get(), L"Parameter", {name});
    EXPECT_EQ(1000u, TextOf(Call(file.get(), L"GetHumanReadable").value).size());
    Tell("Sealed file of 100 MB, opened and checked in", Format("%.0f ms", time / 1e6));
}

// An INI file's content: sections of a thousand keys, "Key7=7".
std::string IniText(int keys) {
    std::string text;
    for (int i = 0; i < keys; ++i) {
        if (i % 1000 == 0) text += "[Section" + std::to_string(i / 1000) + "]\r\n";
        text += "Key" + std::to_string(i) + "=" + std::to_string(i) + "\r\n";
    }
    return text;
}

// The platform reads a file again as long as its last change is recent.
void MakeOld(const std::wstring& path) {
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    const FILETIME old{0, 0x01D00000};
    EXPECT_TRUE(SetFileTime(file, nullptr, nullptr, &old));
    CloseHandle(file);
}

// Of one call, as little as other programs take away of the time.
template <class Work>
double CostOf(Work&& work) {
    double least = 1e12;
    for (int repeat = 0; repeat < 30; ++repeat) {
        least = std::min(least, NanosecondsOf(10, [&] {
                             for (int i = 0; i < 10; ++i) work();
                         }));
    }
    return least;
}

// The library's share is what the bare call does not cost, at every size.
TEST(LoadOfIniFiles, ReadingCostsWhatThePlatformCosts) {
    const ScratchFolder folder;
    const auto file = CreateObject<IDispatch>(__uuidof(CIniFile));
    Points ours, bare;
    for (const int keys : {100, 1'000, 10'000, 100'000, 1'000'000}) {
        const std::wstring path = folder.Write(L"keys" + std::to_wstring(keys) + L".ini", IniText(keys));
        MakeOld(path);
        const std::wstring last = std::to_wstring(keys - 1),
                           inSection = L"Section" + std::to_wstring((keys - 1) / 1000);
        const Variant name = Text(path.c_str()), section = Text(inSection.c_str()), key = Text((L"Key" + last).c_str());
        ASSERT_EQ(S_OK, Call(file.get(), L"Init", {name}).result);
        const auto read = [&] { EXPECT_EQ(last, TextOf(Call(file.get(), L"GetStringValue", {section, key}).value)); };
        const auto readBare = [&] {
            char value[255];
            WIN32_FIND_DATAA found;
            FindClose(FindFirstFileA(Narrow(path).c_str(), &found));
            GetPrivateProfileStringA(Narrow(inSection).c_str(), Narrow(L"Key" + last).c_str(), "", value, sizeof value,
                                     Narrow(path).c_str());
        };
        read();
        ours.push_back({static_cast<double>(keys), CostOf(read)});
        bare.push_back({static_cast<double>(keys), CostOf(readBare)});
        Tell(Format("INI file with %d keys in %d sections, reading the last", keys, (keys + 999) / 1000),
             Format("%.1f \xC2\xB5s, the platform's bare calls %.1f \xC2\xB5s", ours.back().y / 1000,
                    bare.back().y / 1000));
    }
    EXPECT_LT(ours.back().y, 1.5 * bare.back().y);
    Chart chart("What reading the last key of an INI file costs", {"keys", 100, 1e6}, {"ns a call", 1e4, 1e7});
    chart.Add("CIniFile.GetStringValue", std::move(ours));
    chart.Add("the platform's calls alone", std::move(bare));
    Write(chart, "trust-ini.svg");
}

// What is longer than the described buffers is cut; what the platform's functions do not survive is refused.
TEST(LoadOfIniFiles, LimitsHold) {
    const ScratchFolder folder;
    std::string text = IniText(100'000);
    for (int i = 0; i < 3000; ++i) text += "[Empty" + std::to_string(i) + "]\r\n";
    const auto file = CreateObject<IDispatch>(__uuidof(CIniFile));
    const Variant path = Text(folder.Write(L"limits.ini", text).c_str()), section = Text(L"Section99"),
                  key = Text(L"long");
    ASSERT_EQ(S_OK, Call(file.get(), L"Init", {path}).result);
    for (const std::size_t length : {254u, 255u, 32'766u, 32'767u, 100'000u}) {
        const Variant value = Text(std::wstring(length, L'v').c_str());
        const Outcome saved = Call(file.get(), L"SaveStringValue", {section, key, value});
        EXPECT_EQ(length <= 32'766, SUCCEEDED(saved.result)) << length;
        EXPECT_EQ(254u, TextOf(Call(file.get(), L"GetStringValue", {section, key}).value).size()) << length;
    }
    // Names of 8 characters and one that ends each; one more separator closes the list.
    Variant names;
    EXPECT_EQ((8192 - 2) / 9, Call(file.get(), L"EnumerateAllKeys", {section, Arg(&names)}).value.lVal);
    Variant sections;
    EXPECT_LT(800, Call(file.get(), L"EnumerateAllSections", {Arg(&sections)}).value.lVal);
    Tell("INI file of 2 MB with 3,100 sections: values saved and read up to", "32,766 and 254 characters");
}

double CommittedMegabytes() {
    SIZE_T bytes = 0;
    MEMORY_BASIC_INFORMATION region{};
    for (const char* at = nullptr; VirtualQuery(at, &region, sizeof region);) {
        if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += region.RegionSize;
        const char* const next = static_cast<const char*>(region.BaseAddress) + region.RegionSize;
        if (next <= at) break;
        at = next;
    }
    return static_cast<double>(bytes) / (1 << 20);
}

// What other programs take away does not count.
double ProcessorMilliseconds() {
    FILETIME created, ended, used[2];
    GetProcessTimes(GetCurrentProcess(), &created, &ended, &used[0], &used[1]);
    double hundredsOfNanoseconds = 0;
    for (const FILETIME& time : used) hundredsOfNanoseconds += time.dwHighDateTime * 4294967296.0 + time.dwLowDateTime;
    return hundredsOfNanoseconds / 1e4;
}

TEST(Soak, CostAndMemoryStayFlat) {
    constexpr unsigned kRounds = 50;  // with different arguments; then they come again
    const char* const asked = std::getenv("VELK_SOAK_MINUTES");
    const double minutes = asked ? std::atof(asked) : 1;
    const auto run = [](unsigned round) {
        for (const wchar_t* const library : {kMain, kHooks}) {
            const Surroundings surroundings(library);
            ForEachMember(library, [&](const Class& one, const Member& member) { Attempt(one, member, round).Make(); });
        }
    };
    for (unsigned warmUp = 0; warmUp < 2 * kRounds; ++warmUp) run(warmUp % kRounds);
    const Belongings before;
    const double memory = CommittedMegabytes();
    const auto start = Clock::now();
    const auto passed = [&] { return std::chrono::duration<double, std::ratio<60>>(Clock::now() - start).count(); };
    Points costs, processor, sizes;
    do {
        const double used = ProcessorMilliseconds();
        const double cost = NanosecondsOf(kRounds, [&] {
            for (unsigned round = 0; round < kRounds; ++round) run(round);
        });
        costs.push_back({passed(), cost / 1e6});
        processor.push_back({passed(), (ProcessorMilliseconds() - used) / kRounds});
        sizes.push_back({passed(), CommittedMegabytes()});
    } while (passed() < minutes);
    before.ExpectNoMore();
    EXPECT_LT(sizes.back().y, memory + 1);
    EXPECT_LT(LeastOf(processor, true), 1.5 * LeastOf(processor, false));
    Tell(Format("Soak of %.0f s over all members of both libraries", passed() * 60),
         Format("%zu rounds, %.1f ms of processor time each in the first third, %.1f ms in the last; memory %.1f MB, "
                "%+.2f MB",
                costs.size() * kRounds, LeastOf(processor, false), LeastOf(processor, true), memory,
                sizes.back().y - memory));
    Chart chart("Soak: a round of all members, and the memory that stays", {"minutes", 0, std::ceil(passed()), 1},
                {"ms, MB", 1, 10'000});
    chart.Add("ms a round, with the time of the display, of the platform's server and of other programs",
              std::move(costs));
    chart.Add("ms of this process's processor time a round", std::move(processor));
    chart.Add("MB of private memory", std::move(sizes));
    Write(chart, "trust-soak.svg");
}

}  // namespace
}  // namespace velk::test
