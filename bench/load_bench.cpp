// Much of everything: many objects, long lists and texts, big files. What an operation costs must not grow on the way.
// With VELK_CHARTS naming a folder the charts of docs/trust.md are written there; lines of "trust: ..." are its table.
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "bench/chart.h"
#include "bench/ratio.h"
#include "platform/handles.h"
#include "platform/text.h"
#include "support/client.h"
#include "support/late_bound.h"
#include "support/scratch_folder.h"

namespace {

using namespace velk;
using namespace velk::test;
using bench::Chart;
using bench::TimeOf;
using Points = std::vector<Chart::Point>;

constexpr double kMostGrowth = 3;       // the last third beside the first
constexpr double kMostTimesBare = 1.5;  // reading an INI file beside the platform's own calls

bool met = true;

template <class... Values>
std::string Format(const char* format, Values... values) {
    char text[200];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

void Tell(const std::string& what, const std::string& figure) {
    std::printf("trust: %s: %s\n", what.c_str(), figure.c_str());
}

void Require(bool holds, const char* what) {
    if (!holds) std::printf("WRONG: %s\n", what);
    met &= holds;
}

void Write(const Chart& chart, const char* name) {
    if (const char* const folder = std::getenv("VELK_CHARTS"))
        Require(chart.Write((std::string(folder) + "/" + name).c_str()), name);
}

// Of the first or the last third: what other programs take away only adds.
double LeastOf(const Points& points, bool last) {
    const auto third = static_cast<std::ptrdiff_t>((points.size() + 2) / 3);
    const auto begin = last ? points.end() - third : points.begin();
    return std::min_element(begin, begin + third, [](auto& a, auto& b) { return a.y < b.y; })->y;
}

Chart ofLoad("What one operation costs on the way to the full load", {"tenth of the way", 0, 10, 1},
             {"ns an operation", 10, 1e5});

// Ten equal parts; what one operation costs in each. An operation says whether it went right.
void Measure(const char* what, int count, const std::function<bool(int)>& operate) {
    Points tenths;
    int wrong = 0;
    for (int part = 0; part < 10; ++part) {
        const double time = TimeOf([&] {
            for (int i = count / 10 * part; i < count / 10 * (part + 1); ++i) wrong += !operate(i);
        });
        tenths.push_back({part + 1.0, time / count * 10});
    }
    const double first = LeastOf(tenths, false), last = LeastOf(tenths, true);
    Require(wrong == 0 && bench::Report(what, last, first, 1 / kMostGrowth), what);
    Tell(what, Format("%.0f ns each in the first third, %.0f ns in the last", first, last));
    ofLoad.Add(what, std::move(tenths));
}

void ManyObjects() {
    const CLSID classes[] = {__uuidof(CCRC32),  __uuidof(CLinkedList), __uuidof(CConCat), __uuidof(CIniFile),
                             __uuidof(COSInfo), __uuidof(CGDIArc),     __uuidof(CStack),  __uuidof(CFileDialog)};
    std::vector<ComPtr<IUnknown>> objects;
    Measure("10,000 live objects of mixed classes, creation", 10'000, [&](int i) {
        objects.push_back(CreateUnknown(classes[static_cast<std::size_t>(i) % std::size(classes)]));
        return static_cast<bool>(objects.back());
    });
    Measure("10,000 live objects, release", 10'000, [&](int i) {
        objects[static_cast<std::size_t>(i)] = nullptr;
        return true;
    });
    Require(CanUnload(), "unloading");
}

void LongList() {
    constexpr int kItems = 10'000'000;
    const auto list = CreateObject<_CLinkedList>(__uuidof(CLinkedList));
    LONG none = 0, index = 0, room = kItems + 1;
    list->SetSize(&room, nullptr);  // growing would put it in disorder
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

void LongText() {
    constexpr int kPieces = 2'000'000;
    const auto builder = CreateObject<_CConCat>(__uuidof(CConCat));
    Bstr piece(std::wstring(100, L'x'));
    BSTR raw = piece.get();
    Measure("Builder of 200 million characters, appending 100", kPieces,
            [&](int) { return builder->Append(&raw) == S_OK; });
    Bstr text;
    Require(builder->get_Text(text.Receive()) == S_OK && SysStringLen(text.get()) == kPieces * 100u, "a long text");
}

void BigSealedFile() {
    const ScratchFolder folder;
    std::string text = "[BEGIN]\r\n";
    for (int i = 0; text.size() < 100'000'000; ++i)
        text += "PARAMETER." + std::to_string(i) + ".HR=" + std::string(1000, 'v') + "\r\n";
    text += "[END]\r\n";
    LONG seal = 0;
    {
        Bstr region(std::wstring(text.begin(), text.end() - 6));
        BSTR raw = region.get();
        CreateObject<_CCRC32>(__uuidof(CCRC32))->GetCRCFromString(&raw, &seal);
    }
    const Variant path = Text(folder.Write(L"big.dat", text + "@CRC=" + std::to_string(seal) + "\r\n"));
    text = {};
    const auto file = CreateObject<IDispatch>(__uuidof(CDatFile));
    HRESULT opened = S_FALSE;
    const double time = TimeOf([&] { opened = Call(file.get(), L"Initialize", {path}).result; });
    const Variant name = Text(L"PARAMETER.90000");
    Let(file.get(), L"Parameter", {name});
    Require(opened == S_OK && test::TextOf(Call(file.get(), L"GetHumanReadable").value).size() == 1000,
            "a big sealed file");
    Tell("Sealed file of 100 MB, opened and checked in", Format("%.0f ms", time / 1e6));
}

// Sections of a thousand keys, "Key7=7". The platform reads a file again as long as its last change is recent.
std::wstring IniFile(const ScratchFolder& folder, int keys) {
    std::string text;
    for (int i = 0; i < keys; ++i) {
        if (i % 1000 == 0) text += "[Section" + std::to_string(i / 1000) + "]\r\n";
        text += "Key" + std::to_string(i) + "=" + std::to_string(i) + "\r\n";
    }
    const std::wstring path = folder.Write(L"keys" + std::to_wstring(keys) + L".ini", text);
    const FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    const FILETIME old{0, 0x01D00000};
    Require(SetFileTime(file.get(), nullptr, nullptr, &old), "an old file");
    return path;
}

// The library's share is what the bare call does not cost, at every size.
void IniFiles() {
    const ScratchFolder folder;
    const auto file = CreateObject<IDispatch>(__uuidof(CIniFile));
    Points ours, bare;
    for (const int keys : {100, 1'000, 10'000, 100'000, 1'000'000}) {
        const std::wstring path = IniFile(folder, keys), last = std::to_wstring(keys - 1),
                           inSection = L"Section" + std::to_wstring((keys - 1) / 1000);
        const Variant name = Text(path), section = Text(inSection), key = Text(L"Key" + last);
        Call(file.get(), L"Init", {name});
        const auto times = bench::MedianTimes<9>(
            [&] {
                Call(file.get(), L"GetStringValue", {section, key});
            },
            [&, path = ToAnsi(path), section = ToAnsi(inSection), key = ToAnsi(L"Key" + last)] {
                char value[255];
                WIN32_FIND_DATAA found;
                FindClose(FindFirstFileA(path.c_str(), &found));
                GetPrivateProfileStringA(section.c_str(), key.c_str(), "", value, sizeof value, path.c_str());
            });
        Require(test::TextOf(Call(file.get(), L"GetStringValue", {section, key}).value) == last, "the last key");
        ours.push_back({static_cast<double>(keys), times[0]});
        bare.push_back({static_cast<double>(keys), times[1]});
        Tell(Format("INI file with %d keys in %d sections, reading the last", keys, (keys + 999) / 1000),
             Format("%.1f \xC2\xB5s, the platform's bare calls %.1f \xC2\xB5s", times[0] / 1000, times[1] / 1000));
    }
    met &= bench::Report("INI file of a million keys", ours.back().y, bare.back().y, 1 / kMostTimesBare);
    Chart chart("What reading the last key of an INI file costs", {"keys", 100, 1e6}, {"ns a call", 1e4, 1e7});
    chart.Add("CIniFile.GetStringValue", std::move(ours));
    chart.Add("the platform's calls alone", std::move(bare));
    Write(chart, "trust-ini.svg");
}

}  // namespace

int main() {
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    ManyObjects();
    LongList();
    LongText();
    Write(ofLoad, "trust-load.svg");
    BigSealedFile();
    IniFiles();
    return met ? 0 : 1;
}
