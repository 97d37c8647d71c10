// Runs the files of facts: what each class does, as lines. They lie beside the other tests of their folder, one file a
// class. A scenario begins at the margin with a class, "CStack: what it shows", and makes an object; the lines below
// are done in order, late bound and then once more through the members' slots. What the platform was asked, what was
// shown and what events told has to be said by the next line.
//
//   Member 1, "a"              is called and has to succeed
//   Member = 2                 ... and gives just this (see values.h)
//   Member 1 := 2              a property is put; := &object by reference
//   Member ! 9 "text"          it fails: run-time error 9, or ! 0x80044705 "text" from VelkSprt.CStack
//   STEP shows "title", "text" the report that it showed, or STEP saw F 1: what it asked; also in a line of its own
//   #0 1 = 2                   a member by its dispatch identifier, which the type library need not list
//   each = [1, 2]              what For Each gives, and so do an enumerator's other ways to walk
//   &name = 5                  what a script's variable holds now
//   let name = 5               a variable; new CStack or a program identifier makes an object; name.Member calls it
//   3 times Member             a repeated step; {0|2} stands for each part in turn, all braces of a line together
//
//   with F 1 answers 5, 6 error 87 fills 1 "text" fills 2 longs 1 _ 3
//                              platform calls whose line begins so get these answers, and are told as
//   saw F 1, "a"               what the step before asked of the platform;  saw 5 times F: so many lines that begin so;
//                              saw F 1; G 2: one after the other. Drawing objects are told as pen 1, brush 1, dc 2
//   when F 1 answers 5, itself the answers without telling;  without F: the platform lacks it
//   memory 1000                no block of so many bytes or more can be had from here on;  memory: all can again
//   held below 1000            so many bytes more than at first are on the library's heap
//   file "name" = "bytes"      written to the scenario's folder;  file "name" holds "bytes": compared, in Windows-1252
//   set NAME = "value"         a variable of the environment
//   canvas c 0xFF0000          a blue picture of 80 x 80 pixels, c is its context;  pixel c 3 4 = 0x0000FF
//
//   listen                     to the object's events: each is told as "saw Progress 0.5f";  leave: no longer
//   on Progress 0.5 does STEP  what a handler does in events whose line begins so
//   let name = farewell STEP   an object that is told as "saw farewell" when it is destroyed, and does a step then
//   drop                       gives the object up
//
// In the end nothing is left behind: no object, and where texts are not cached (OANOCACHE=1), no text or array.
// A title that ends with "(32 bits)" is for the library of that width only.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <list>
#include <map>
#include <optional>
#include <set>

#include "facts/listener.h"
#include "facts/objects.h"
#include "facts/platform_log.h"
#include "facts/scenario.h"
#include "facts/values.h"
#include "platform/text.h"
#include "support/client.h"
#include "support/late_bound.h"
#include "support/malloc_spy.h"
#include "support/scarce_memory.h"
#include "support/scoped_variable.h"
#include "support/scratch_folder.h"

namespace velk::facts {
namespace {

class Run : public testing::Test {
  public:
    Run(const Scenario& scenario, bool bySlot) : scenario_(scenario), bySlot_(bySlot) {}

    void TestBody() override {
        for (const Line& line : scenario_.lines) {
            number_ = line.number;
            try {
                for (const std::wstring& one : Alternatives(line.text)) Do(said_ = one);
            } catch (const std::exception& problem) {
                Fails(std::wstring(Wide(FromAnsi(problem.what()))));
            }
        }
        NothingUntold();
        listener_ = std::nullopt;
        variables_.clear();
        object_ = nullptr;
        number_ = scenario_.line, said_ = scenario_.title;
        if (!test::CanUnload()) Fails(L"an object is left behind");
        // The library and the platform keep what they need for a class from its first calls on.
        static std::set<std::wstring> called;
        if (!bySlot_ || called.insert(scenario_.className).second) return;
        HeldBelow(1);
        if (std::getenv("OANOCACHE"))
            Same(L"texts left behind: 0", L"texts left behind: " + std::to_wstring(test::MallocSpy::Alive() - texts_));
    }

  private:
    void Do(std::wstring line) {
        for (std::size_t at; (at = line.find(L"$dir")) != line.npos;) line.replace(at, 4, Escaped(folder_.path()));
        const auto says = [&](std::wstring_view word) {
            if (!line.starts_with(word)) return false;
            if (word != L"saw " && word != L"shows ") line = Trim(std::wstring_view(line).substr(word.size()));
            return true;
        };
        if (says(L"saw ") || says(L"shows ")) return Told(line);
        NothingUntold();
        for (const std::wstring told : {L" shows ", L" saw "}) {
            const auto parts = Split(line, told);
            if (parts.size() == 2) return Do(parts[0]), Told(told.substr(1) + parts[1]);
        }
        if (says(L"let ")) return Let(line);
        if (says(L"set ")) return Set(line);
        if (says(L"file ")) return File(line);
        if (says(L"with ")) return AddRule(line, true);
        if (says(L"when ")) return AddRule(line, false);
        if (says(L"without ")) return Lacks(line);
        if (says(L"memory")) return Memory(line);
        if (says(L"held below ")) return HeldBelow(std::stoi(line));
        if (says(L"canvas ")) return DrawOn(line);
        if (says(L"pixel ")) return Pixel(line);
        if (says(L"on ")) return on_.push_back(Split(line, L" does "));
        for (int times = Times(line); times > 0; --times) Step(line);
    }

    // Takes "5 times " away.
    static int Times(std::wstring& line) {
        const std::size_t at = line.find(L" times ");
        if (at == line.npos || line.find_first_not_of(L"0123456789") != at) return 1;
        const int times = std::stoi(line);
        line.erase(0, at + 7);
        return times;
    }

    void Told(const std::wstring& wanted) {
        std::wstring call = wanted.substr(4);
        const int times = Times(call);
        if (wanted.starts_with(L"shows ")) return Same(wanted, log_.Next());
        if (times == 1) {
            for (const std::wstring& one : Split(call, L";")) Same(L"saw " + one, log_.Next());
            return;
        }
        for (int i = 0; i < times && !HasFailure(); ++i) Same(L"saw " + call, log_.Next().substr(0, 4 + call.size()));
    }

    // c 0xFF00FF
    void DrawOn(const std::wstring& line) {
        const auto parts = Split(line, L" ");
        const HDC context = canvases_[parts.at(0)].context.get();
        const GdiObject brush(CreateSolidBrush(std::stoul(parts.at(1), nullptr, 0)));
        const RECT all{0, 0, Canvas::kSize, Canvas::kSize};
        FillRect(context, &all, static_cast<HBRUSH>(brush.get()));
        static_cast<VARIANT&>(variables_[parts[0]]) = test::Arg(HandleToLong(context));
    }

    // c 3 4 = 0xFF00FF
    void Pixel(const std::wstring& line) {
        const auto parts = Split(line, L" ");
        const HDC context = canvases_.at(parts.at(0)).context.get();
        wchar_t given[16];
        swprintf(given, 16, L"0x%06lX", GetPixel(context, std::stoi(parts.at(1)), std::stoi(parts.at(2))));
        Same(parts.at(4), given);
    }

    void Memory(const std::wstring& line) { heap_.Refuse(line.empty() ? SIZE_MAX : std::stoul(line), SIZE_MAX); }

    void HeldBelow(std::ptrdiff_t most) const {
        if (heap_.held() >= most) Fails(L"the library holds " + std::to_wstring(heap_.held()) + L" bytes more");
    }

    void Heard(const std::wstring& event) {
        log_.Tell(event);
        for (const auto& rule : on_) {
            if (event.starts_with(rule.at(0))) Step(rule.at(1));
        }
    }

    void Fails(const std::wstring& why) const {
        ADD_FAILURE_AT(scenario_.file.c_str(), number_) << ToAnsi(said_ + L"\n  " + why);
    }
    void Same(const std::wstring& wanted, const std::wstring& given) const {
        if (wanted != given) Fails(L"wanted: " + wanted + L"\n  given:  " + given);
    }
    // What the line before caused has been said.
    void NothingUntold() {
        if (const std::wstring told = log_.Next(); !told.empty()) Fails(L"no line says before this one: " + told);
    }

    void Lacks(const std::wstring& function) {
        Rule rule;
        rule.function = ToAnsi(function);
        rule.missing = true;
        log_.Add(std::move(rule));
    }

    void Let(const std::wstring& line) {
        const auto parts = Split(line, L"=");
        Variant value;
        Variant& variable = variables_[parts[0]];
        if (parts.at(1).starts_with(L"new ")) {
            static_cast<VARIANT&>(value) = test::Arg(Made(parts[1].substr(4)).Detach());
        } else if (parts[1].starts_with(L"farewell ")) {
            const auto bye = [this, step = parts[1].substr(9)] { Heard(L"farewell"), Step(step); };
            static_cast<VARIANT&>(value) = test::Arg(static_cast<IDispatch*>(new Farewell(bye)));
        } else {
            value = ValueOf(parts[1], variables_);
        }
        if (!ChangedInPlace(variable, value)) variable = std::move(value);
    }

    // A text or an array changes where it lies, so that whoever only kept a pointer to it sees that.
    static bool ChangedInPlace(const VARIANT& variable, const VARIANT& value) {
        if (variable.vt != value.vt) return false;
        if (value.vt & VT_ARRAY) return SUCCEEDED(SafeArrayCopyData(value.parray, variable.parray));
        const UINT size = SysStringByteLen(value.vt == VT_BSTR ? value.bstrVal : nullptr);
        if (size == 0 || size != SysStringByteLen(variable.bstrVal)) return false;
        std::memcpy(variable.bstrVal, value.bstrVal, size);
        return true;
    }

    void Set(const std::wstring& line) {
        const auto parts = Split(line, L"=");
        environment_.push_back(
            std::make_unique<test::ScopedVariable>(parts.at(0).c_str(), Unquote(parts.at(1)).c_str()));
    }

    void File(const std::wstring& line) {
        if (const auto written = Split(line, L"="); written.size() == 2) {
            folder_.Write(Unquote(written[0]), ToAnsi(test::TextOf(ValueOf(written[1], variables_))));
            return;
        }
        const auto parts = Split(line, L" holds ");
        std::ifstream file(std::filesystem::path(folder_.Path(Unquote(parts.at(0)))), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        Same(parts.at(1), Quote(Wide(FromAnsi(bytes))));
    }

    // F 1 answers 5, 6 error 87 fills 1 "text" fills 2 longs 1 2
    void AddRule(const std::wstring& line, bool logged) {
        auto parts = Split(line, L" fills ");
        Rule rule;
        rule.logged = logged;
        rule.fillings.assign(parts.begin() + 1, parts.end());
        parts = Split(parts[0], L" error ");
        if (parts.size() == 2) rule.error = static_cast<DWORD>(std::stoul(parts[1]));
        parts = Split(parts[0], L" answers ");
        if (parts.size() == 2) {
            for (const auto& answer : Split(parts[1], L",")) {
                rule.answers.emplace_back();
                if (answer != L"itself") rule.answers.back() = static_cast<LONG_PTR>(std::stoll(answer, nullptr, 0));
            }
        }
        const std::size_t name = parts[0].find(L' ');
        rule.function = ToAnsi(parts[0].substr(0, name));
        if (name != parts[0].npos) rule.arguments = parts[0].substr(name + 1);
        log_.Add(std::move(rule));
    }

    static std::wstring Rest(IEnumVARIANT* all) {
        std::wstring shown;
        for (Variant value; all->Next(1, &value, nullptr) == S_OK; value = Variant()) {
            shown += (shown.empty() ? L"" : L", ") + Show(value);
        }
        return shown;
    }

    void Each(std::wstring_view wanted) {
        const test::Outcome made = test::Get(object_.get(), L"#-4");
        ASSERT_EQ(VT_UNKNOWN, made.value.vt);
        const auto all = ComPtr<IUnknown>(made.value.punkVal).As<IEnumVARIANT>();
        object_ = nullptr;  // which the enumerator does not need
        ComPtr<IEnumVARIANT> copy;
        all->Clone(copy.Receive());
        EXPECT_EQ(wanted, L"[" + Rest(all.get()) + L"]");
        EXPECT_EQ(S_FALSE, all->Skip(1));
        EXPECT_EQ(S_OK, all->Reset());
        EXPECT_EQ(S_OK, copy->Skip(1));
        Variant first;
        ULONG fetched = 0;
        EXPECT_EQ(S_OK, all->Next(1, &first, &fetched));
        EXPECT_EQ(wanted, L"[" + Show(first) + L", " + Rest(copy.get()) + L"]");
    }

    void Step(const std::wstring& line) {
        if (line == L"listen") return void(listener_.emplace(object_.get(), [this](auto& event) { Heard(event); }));
        if (line == L"leave") return listener_.reset();
        if (line == L"drop") return void(object_ = nullptr);
        if (line.starts_with(L"each = ")) return Each(std::wstring_view(line).substr(7));
        auto parts = Split(line, L" ! ");
        std::wstring wanted = parts.size() == 2 ? L"! " + parts[1] : L"";
        parts = Split(parts[0], L":=");
        if (parts.size() == 2) {
            const bool byReference = parts[1].starts_with(L'&');
            return Expect(wanted, Call(parts[0], byReference ? DISPATCH_PROPERTYPUTREF : DISPATCH_PROPERTYPUT,
                                       parts[1].substr(byReference)));
        }
        parts = Split(parts[0], L" = ");
        if (parts.size() == 2) wanted = L"= " + parts[1];
        if (parts[0].starts_with(L'&')) return Same(wanted, L"= " + Show(variables_[parts[0].substr(1)]));
        Expect(wanted, Call(parts[0], kAsCalled, L""));
    }

    static constexpr WORD kAsCalled = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

    test::Outcome Call(std::wstring call, WORD flags, const std::wstring& put) {
        IDispatch* object = object_.get();
        const std::size_t blank = call.find(L' ');
        if (const std::size_t dot = call.find(L'.'); dot < blank) {
            object = variables_.at(call.substr(0, dot)).pdispVal;
            call.erase(0, dot + 1);
        }
        const std::wstring name = call.substr(0, call.find(L' '));
        std::vector<Variant> values;
        for (const auto& text : Split(std::wstring_view(call).substr(name.size()), L","))
            values.push_back(ValueOf(text, variables_));
        if (!put.empty()) values.push_back(ValueOf(put, variables_));
        std::vector<VARIANT> arguments(values.begin(), values.end());
        if (bySlot_ && name[0] != L'#') return test::InvokeByPlatform(object, name.c_str(), flags, BySlot(arguments));
        return test::InvokeNamed(object, name.c_str(), flags, arguments,
                                 put.empty() ? std::vector<DISPID>() : std::vector<DISPID>{DISPID_PROPERTYPUT});
    }

    // A typed variable is handed over as what it holds: the platform's own call converts no script's variables.
    static std::vector<VARIANT> BySlot(std::vector<VARIANT> arguments) {
        for (VARIANT& argument : arguments) {
            if (argument.vt != (VT_BYREF | VT_VARIANT) || argument.pvarVal->vt == VT_EMPTY) continue;
            argument = test::Ref(argument.pvarVal->vt, &argument.pvarVal->byref);
        }
        return arguments;
    }

    void Expect(const std::wstring& wanted, const test::Outcome& outcome) {
        std::wstring given = L"= " + Show(outcome.value);
        if (FAILED(outcome.result)) {
            const auto code = static_cast<DWORD>(outcome.result == DISP_E_EXCEPTION ? outcome.code : outcome.result);
            wchar_t number[16];
            swprintf(number, 16, code >> 16 == 0x800A ? L"%lu" : L"0x%08lX",
                     code >> 16 == 0x800A ? code & 0xFFFF : code);
            given = L"! " + std::wstring(number) + L" " + Quote(outcome.description) + L" from " + outcome.source;
            const bool known = wanted.starts_with(L"! ") && (given + L" ").starts_with(wanted + L" ");
            if (!known) Same(wanted.empty() ? L"success" : wanted, given);
        } else if (!wanted.empty()) {
            Same(wanted, given);
        }
    }

    static std::wstring Escaped(const std::wstring& text) {
        const std::wstring quoted = Quote(text);
        return quoted.substr(1, quoted.size() - 2);
    }

    const Scenario& scenario_;
    const bool bySlot_;
    int number_ = 0;
    std::wstring said_;  // the line, with one part of its braces
    const test::ScopedVariable boxes_{L"VELKSPRT_REPORTS", nullptr};
    std::vector<std::unique_ptr<test::ScopedVariable>> environment_;
    const LONG texts_ = test::MallocSpy::Alive();
    test::ScratchFolder folder_;
    PlatformLog log_;
    test::ScarceMemory heap_{SIZE_MAX, SIZE_MAX};
    std::map<std::wstring, Canvas> canvases_;
    Variables variables_;
    ComPtr<IDispatch> object_ = Made(scenario_.className);
    std::vector<std::vector<std::wstring>> on_;
    std::optional<Listener> listener_;
};

std::string TestName(std::wstring_view title) {
    std::string name;
    for (const wchar_t character : title)
        name += iswalnum(character) && character < 128 ? static_cast<char>(character) : '_';
    return name;
}

void Register(const Scenario& scenario, const std::string& folder, const std::string& title) {
    for (const bool bySlot : {false, true}) {
        testing::RegisterTest((folder + "_" + ToAnsi(scenario.className) + (bySlot ? "BySlot" : "LateBound")).c_str(),
                              title.c_str(), nullptr, nullptr, scenario.file.c_str(), scenario.line,
                              [&scenario, bySlot]() -> testing::Test* { return new Run(scenario, bySlot); });
    }
}

void RegisterAll() {
    static std::list<Scenario> scenarios;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(test::BuiltFile(L"tests/facts"))) {
        if (entry.path().extension() != ".facts") continue;
        std::list<Scenario> made = ScenariosOf(entry.path());
        const std::string folder = entry.path().parent_path().filename().string();
        if (sizeof(void*) != 4) made.remove_if([](const Scenario& one) { return one.title.ends_with(L"(32 bits)"); });
        for (const Scenario& one : made) Register(one, folder, TestName(one.title));
        scenarios.splice(scenarios.end(), made);
    }
}

}  // namespace
}  // namespace velk::facts

int main(int count, char** arguments) {
    testing::InitGoogleTest(&count, arguments);
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    velk::facts::RegisterAll();
    const int result = RUN_ALL_TESTS();
    CoUninitialize();
    return result;
}
