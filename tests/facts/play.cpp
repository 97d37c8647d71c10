#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <optional>

#include "facts/platform_log.h"
#include "facts/scenario.h"
#include "facts/user.h"
#include "facts/values.h"
#include "platform/text.h"
#include "support/client.h"
#include "support/heap.h"
#include "support/late_bound.h"
#include "support/malloc_spy.h"
#include "support/scratch_folder.h"
#include "support/test_printer.h"
#include "support/test_window.h"
#include "support/value_object.h"

namespace velk::facts {
namespace {

// By the name of a class, which the library's manifest tells.
ComPtr<IDispatch> New(const std::wstring& name) {
    static const auto known = test::Activated(test::BuiltFile(L"VelkSupport.manifest"));
    CLSID clsid;
    ComPtr<IDispatch> object;
    if (FAILED(CLSIDFromProgID((L"VelkSupport." + name).c_str(), &clsid)) ||
        FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, object.ReceiveVoid())))
        throw std::runtime_error("no class " + ToAnsi(name));
    return object;
}

// An object that does something when its last reference is released.
ComPtr<IDispatch> Farewell(const std::function<void()>& bye) {
    const auto made = test::ValueObject::Make(test::Missing());
    made->onRead = [kept = std::shared_ptr<void>(nullptr, [bye](void*) { bye(); })](auto...) {};
    return made.As<IDispatch>();
}

// Hears the events of an object, each event as a line: "Progress 0.5f".
std::shared_ptr<IConnectionPoint> Listening(IDispatch* source, std::function<void(const std::wstring&)> hear) {
    ComPtr<ITypeLib> types;
    ComPtr<ITypeInfo> events;
    IID iid;
    const auto described = ComPtr<IUnknown>(source).As<IProvideClassInfo2>();
    if (!described || FAILED(described->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &iid)))
        throw std::runtime_error("no events");
    LoadTypeLib(test::LibraryPath().c_str(), types.Receive());
    types->GetTypeInfoOfGuid(iid, events.Receive());
    const auto sink = test::ValueObject::Make(test::Missing());
    sink->onRead = [events, hear, &called = sink->called](DISPPARAMS* given) {
        Bstr name;
        events->GetDocumentation(called, name.Receive(), nullptr, nullptr, nullptr);
        std::vector<std::wstring> values;
        for (UINT i = given->cArgs; i-- > 0;) {
            Variant value;
            VariantCopyInd(&value, &given->rgvarg[i]);
            values.push_back(Show(value));
        }
        // What a handler writes into a Single is read by no class.
        if (given->cArgs && given->rgvarg[0].vt == (VT_BYREF | VT_R4)) *given->rgvarg[0].pfltVal = 77;
        hear(TextOf(name.get()) + L" " + Joined(values));
    };
    return test::Connected(source, iid, sink.get());
}

// The line once for each part of its braces.
std::vector<std::wstring> Alternatives(const std::wstring& line) {
    std::vector<std::wstring> made(1);
    std::vector<std::vector<std::wstring>> groups;
    std::size_t at = 0;
    for (std::size_t open; (open = line.find(L'{', at)) != line.npos;) {
        const std::size_t close = line.find(L'}', open);
        auto parts = Split(std::wstring_view(line).substr(open + 1, close - open - 1), L"|");
        if (close == open + 2) parts = groups.at(line[open + 1] - L'1');
        if (parts.size() == 1) parts[0] = L'{' + parts[0] + L'}';  // nothing to choose from
        groups.push_back(parts);
        if (made.size() == 1) made.resize(parts.size(), made[0]);
        for (std::size_t i = 0; i < made.size(); ++i) made[i] += line.substr(at, open - at) + parts.at(i);
        at = close + 1;
    }
    for (std::wstring& one : made) one += line.substr(at);
    return made;
}

class ScenarioRun {
  public:
    explicit ScenarioRun(const Scenario& scenario) : scenario_(scenario) {}

    void Play() {
        for (const Line& line : scenario_.lines) {
            number_ = line.number;
            try {
                for (const std::wstring& one : Alternatives(said_ = line.text)) {
                    for (const std::wstring& step : Split(one, L" ; ")) Do(said_ = step);
                }
            } catch (const std::exception& problem) {
                Fails(std::wstring(Wide(FromAnsi(problem.what()))));
            }
        }
        NothingUntold();
        listener_ = nullptr;
        variables_.clear();
        object_ = nullptr;
        if (!key_.empty()) RegDeleteTreeA(HKEY_CURRENT_USER, key_.c_str());
        number_ = scenario_.line, said_ = scenario_.title;
        if (!test::CanUnload()) Fails(L"an object is left behind");
    }

    // What is still there afterwards, of bytes on the library's heap and, where they are not cached, of texts.
    std::wstring Left() const {
        const auto texts = [&] { return std::getenv("OANOCACHE") ? test::MallocSpy::Alive() - texts_ : 0; };
        for (int wait = 0; texts() > 0 && wait < 100; ++wait) Sleep(10);  // a dialog's own threads may hold some yet
        if (held_ > 0) return std::to_wstring(held_) + L" bytes are left behind";
        return texts() != 0 ? std::to_wstring(texts()) + L" texts are left behind, or freed twice" : L"";
    }
    void Fails(const std::wstring& why) const {
        ADD_FAILURE_AT(scenario_.file.c_str(), number_) << ToAnsi(said_ + L"\n  " + why);
    }

  private:
    void Do(std::wstring line) {
        const std::wstring folder = Quote(folder_.path());
        for (std::size_t at; (at = line.find(L"$dir")) != line.npos;) line.replace(at, 4, folder, 1, folder.size() - 2);
        if (const auto step = Cut(line, L" times "); !step.empty()) {
            for (int left = std::stoi(line); left > 0 && !testing::Test::HasFailure(); --left) Do(step);
            return;
        }
        if (line.starts_with(L"saw ") || line.starts_with(L"shows ")) return Told(line);
        NothingUntold();
        for (const std::wstring told : {L" shows ", L" saw "}) {
            if (const auto rest = Cut(line, told); !rest.empty()) return Do(line), Told(told.substr(1) + rest);
        }
        Act(line);
    }

    // Whether a line begins with a word, which is taken away.
    static bool Begins(std::wstring& line, std::wstring_view word) {
        const bool begins = line.starts_with(word);
        return line.erase(0, begins ? word.size() : 0), begins;
    }

    void Act(std::wstring line) {
        if (line.starts_with(L"with ") || line.starts_with(L"when ") || line.starts_with(L"without "))
            return log_.Add(line);
        if (Begins(line, L"let ")) return Let(line);
        if (Begins(line, L"set ")) return Set(line);
        if (Begins(line, L"file ")) return File(line);
        if (Begins(line, L"key ")) return Key(line);
        if (Begins(line, L"value ")) return StoredValue(line);
        if (Begins(line, L"memory")) return void(scarce_ = line.empty() ? SIZE_MAX : std::stoul(line));
        if (Begins(line, L"held below ")) return Held(std::stoi(line));
        if (Begins(line, L"on ")) return on_.push_back(Split(line, L" does "));
        if (Begins(line, L"drop")) return void(object_ = nullptr);
        if (Begins(line, L"user ")) return void(user_ = std::make_unique<User>(line, variables_[L"other"]));
        if (Begins(line, L"printer")) return void(printer_.emplace());
        if (Begins(line, L"until ")) return Until(line);
        if (Begins(line, L"listen")) return Listen();
        if (Begins(line, L"leave")) return void(listener_ = nullptr);
        if (Begins(line, L"each = ")) return Each(line);
        Step(line);
        const auto user = std::exchange(user_, nullptr);
        if (const std::wstring problem = user ? user->Problem() : L""; !problem.empty()) Fails(problem);
    }

    void Told(const std::wstring& wanted) {
        if (wanted.starts_with(L"shows ")) return Same(wanted, log_.Next());
        for (const std::wstring& one : Split(wanted.substr(4), L";")) Same(L"saw " + one, log_.Next());
    }

    void Held(int most) {
        if (held_ >= most) Fails(L"the library holds " + std::to_wstring(held_) + L" bytes more");
    }
    void Heard(const std::wstring& event) { log_.lines.push_back(L"saw " + event), React(event); }
    void React(const std::wstring& event) {
        for (const auto& rule : on_)
            if (event.starts_with(rule.at(0))) Act(rule.at(1));
    }

    void Same(const std::wstring& wanted, const std::wstring& given) const {
        if (!Alike(wanted + L"\n", given + L"\n")) Fails(L"wanted: " + wanted + L"\n  given:  " + given);
    }
    // What the line before caused has been said.
    void NothingUntold() {
        if (const std::wstring told = log_.Next(); !told.empty()) Fails(L"no line says before this one: " + told);
    }

    void Let(std::wstring line) {
        Variant value = Made(Cut(line, L"="));  // which may change variables
        variables_[line] = std::move(value);
    }

    Variant Made(std::wstring text) {
        if (Begins(text, L"new ")) return test::Owned(test::Arg(New(text).Detach()));
        if (Begins(text, L"part ")) {
            IID iid{};
            IIDFromString(text.c_str(), &iid);
            return test::Owned(test::Arg(object_.As<IDispatch>(iid).Detach()));
        }
        if (Begins(text, L"farewell "))
            return test::Owned(test::Arg(Farewell([this, text] { Heard(L"farewell"), Act(text); }).Detach()));
        return Begins(text, L"call ") ? Call(text).value : ValueOf(text, variables_);
    }

    void Set(std::wstring line) {
        const std::wstring value = Unquote(Cut(line, L"="));
        SetEnvironmentVariableW(line.c_str(), value.c_str());
    }

    void File(std::wstring line) {
        if (const auto written = Cut(line, L" = "); !written.empty()) {
            folder_.Write(Unquote(line), ToAnsi(View(ValueOf(written, variables_).bstrVal)));
            return;
        }
        const std::wstring wanted = Cut(line, L" holds ");
        std::ifstream file(std::filesystem::path(folder_.Path(Unquote(line))), std::ios::binary);
        Same(wanted, Quote(std::string{std::istreambuf_iterator<char>(file), {}}));
    }

    void Key(const std::wstring& root) {
        key_ = ToAnsi(Unquote(root));
        RegDeleteTreeA(HKEY_CURRENT_USER, key_.c_str());
    }

    // "Sub\v" = 1 "bytes", or holds
    void StoredValue(std::wstring line) {
        const std::wstring wanted = Cut(line, L" holds "), stored = Cut(line, L" = ");
        const std::string path = key_ + '\\' + ToAnsi(Unquote(line)), key = path.substr(0, path.rfind('\\'));
        const char* const name = path.c_str() + key.size() + 1;
        std::string bytes(200'000, '\0');
        DWORD type = 0, size = static_cast<DWORD>(bytes.size());
        if (!stored.empty()) {
            bytes = ToAnsi(Unquote(stored.substr(stored.find(L'"'))));
            EXPECT_EQ(ERROR_SUCCESS, RegSetKeyValueA(HKEY_CURRENT_USER, key.c_str(), name, std::stoul(stored),
                                                     bytes.data(), static_cast<DWORD>(bytes.size())));
            return;
        }
        RegGetValueA(HKEY_CURRENT_USER, key.c_str(), name, RRF_RT_ANY | RRF_NOEXPAND, &type, bytes.data(), &size);
        Same(wanted, std::to_wstring(type) + L" " + Quote(std::string_view(bytes).substr(0, size)));
    }

    // StillExecuting = False
    void Until(std::wstring line) {
        const std::wstring step = line, wanted = Cut(line, L" = ");
        test::WaitUntil([&] { return Show(Call(line).value) == wanted; });
        Step(step);
    }

    static std::wstring Rest(IEnumVARIANT* all) {
        std::vector<std::wstring> shown;
        for (Variant value; all->Next(1, &value, nullptr) == S_OK; value = Variant()) shown.push_back(Show(value));
        return Joined(shown);
    }

    void Each(std::wstring wanted) {
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
        for (const HRESULT answer :
             {all->Next(2, &first, nullptr), all->Next(1, nullptr, &fetched), all->Clone(nullptr)})
            EXPECT_EQ(E_POINTER, answer);
    }

    void Listen() {
        listener_ = Listening(object_.get(), [this](auto& event) { Heard(event); });
    }

    void Step(std::wstring line) {
        std::wstring wanted;
        if (const auto error = Cut(line, L" ! "); !error.empty()) wanted = L"! " + error;
        if (const auto put = Cut(line, L":="); !put.empty()) {
            const bool byReference = put.starts_with(L'&');
            return Expect(wanted, Call(line, byReference ? DISPATCH_PROPERTYPUTREF : DISPATCH_PROPERTYPUT,
                                       put.substr(byReference)));
        }
        if (const auto value = Cut(line, L" = "); !value.empty()) wanted = L"= " + Expanded(value);
        if (line.starts_with(L'&')) return Same(wanted, L"= " + Show(variables_[line.substr(1)]));
        Expect(wanted, Call(line));
    }

    // "x" * 300, or a variable, as what it stands for
    std::wstring Expanded(const std::wstring& value) {
        const bool stands = Split(value, L" * ").size() == 2 || variables_.contains(value);
        return stands ? Show(ValueOf(value, variables_)) : value;
    }

    test::Outcome Call(std::wstring call, WORD flags = DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                       const std::wstring& put = L"") {
        IDispatch* object = object_.get();
        if (const std::size_t dot = call.find(L'.'); dot < call.find(L' ')) {
            object = variables_.at(call.substr(0, dot)).pdispVal;
            call.erase(0, dot + 1);
        }
        const std::wstring name = call.substr(0, call.find(L' '));
        std::vector<Variant> values;
        for (const auto& text : Split(std::wstring_view(call).substr(name.size()), L","))
            values.push_back(ValueOf(text, variables_));
        if (!put.empty()) values.push_back(ValueOf(put, variables_));
        return test::Invoke(object, name.c_str(), flags, {values.begin(), values.end()});
    }

    static std::wstring ErrorOf(const test::Outcome& outcome) {
        const auto code = static_cast<DWORD>(outcome.result == DISP_E_EXCEPTION ? outcome.code : outcome.result);
        wchar_t number[16];
        swprintf(number, 16, code >> 16 == 0x800A ? L"%lu" : L"0x%08lX", code >> 16 == 0x800A ? code & 0xFFFF : code);
        return L"! " + std::wstring(number) + L" " + Quote(outcome.description) + L" from " + outcome.source;
    }

    void Expect(const std::wstring& wanted, const test::Outcome& outcome) {
        const bool failed = FAILED(outcome.result);
        const std::wstring given = failed ? ErrorOf(outcome) : L"= " + Show(outcome.value);
        if (failed && !wanted.empty() && Alike(wanted + L" ", given + L" ")) return;
        const bool same = !failed && given == L"= NullText" && wanted == L"= \"\"";  // to a client
        if (failed || !(same || wanted.empty())) Same(wanted.empty() ? L"success" : wanted, given);
    }

    const Scenario& scenario_;
    int number_ = 0;
    std::wstring said_;  // the step, with one part of its braces
    const LONG texts_ = test::MallocSpy::Alive();
    test::ScratchFolder folder_;
    std::string key_;
    std::optional<test::TestPrinter> printer_;
    std::unique_ptr<User> user_;
    PlatformLog log_{[this](auto& step) { Do(step); }, [this](auto& box) { React(box); }};
    std::size_t scarce_ = SIZE_MAX;  // blocks of this size cannot be had
    const std::ptrdiff_t& held_ = test::Heap::held.bytes;
    const test::Heap heap_{test::Library(), [this](std::size_t size) { return size >= scarce_; }};
    Variables variables_;
    ComPtr<IDispatch> object_ = New(scenario_.className);
    std::vector<std::vector<std::wstring>> on_;
    std::shared_ptr<IConnectionPoint> listener_;
};

}  // namespace

// The library and the platform keep what they need from first calls on, so what leaves something is played once more.
void Play(const Scenario& scenario) {
    for (const bool again : {false, true}) {
        ScenarioRun run(scenario);
        run.Play();
        const std::wstring left = run.Left();
        if (left.empty() || testing::Test::HasFailure()) return;
        if (again) run.Fails(left);
    }
}

}  // namespace velk::facts
