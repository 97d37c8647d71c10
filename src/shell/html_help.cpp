#include "shell/html_help.h"

#include <htmlhelp.h>

#include "platform/files.h"
#include "platform/long_handles.h"
#include "platform/system_library.h"
#include "platform/text.h"

namespace velk {
namespace {

// The number that the runtime gives a library that is not there, with the name, so that it is not taken for the help
// file.
constexpr ClassError kNoHelpEngine(kRuntimeErrorBase + 53, L"File not found: hhctrl.ocx", ErrorSource::Library);

using HelpCall = decltype(HtmlHelpA);

// Deliberately kept for the life of the process: its windows outlive the call that opened them.
constinit KeptSystemLibrary hhctrl(L"hhctrl.ocx");

HelpCall& Engine() {
    HelpCall* const found = FindFunction<HelpCall>(hhctrl.get(), "HtmlHelpA");
    return found ? *found : throw kNoHelpEngine;
}

}  // namespace

constinit const ClassInfo CHtmlHelp::kInfo{
    .name = L"CHtmlHelp",
    .clsid = __uuidof(::CHtmlHelp),
    .iid = __uuidof(_CHtmlHelp),
    .policy = FailurePolicy::PassOn,
};

STDMETHODIMP CHtmlHelp::get_HelpFile(BSTR* result) noexcept { return Get(result, helpFile_); }

STDMETHODIMP CHtmlHelp::put_HelpFile(BSTR* strHelpFile) noexcept { return Let(strHelpFile, helpFile_); }

STDMETHODIMP CHtmlHelp::put_ParentHWND(LONG* lngParentHWND) noexcept { return Let(lngParentHWND, parent_); }

STDMETHODIMP CHtmlHelp::OpenContents() noexcept {
    return Guard([&] { Open(HH_DISPLAY_TOC, 0); });
}

STDMETHODIMP CHtmlHelp::OpenContext(LONG* lngContextID) noexcept {
    return Guard([&] { Open(HH_HELP_CONTEXT, static_cast<DWORD>(Given(lngContextID))); });
}

STDMETHODIMP CHtmlHelp::OpenFinder() noexcept {
    return Guard([&] { Open(HH_DISPLAY_INDEX, 0); });
}

STDMETHODIMP CHtmlHelp::OpenSearch() noexcept {
    return Guard([&] {
        HH_FTS_QUERY query{};
        query.cbStruct = sizeof(query);
        query.fExecute = TRUE;
        Open(HH_DISPLAY_SEARCH, reinterpret_cast<DWORD_PTR>(&query));
    });
}

STDMETHODIMP CHtmlHelp::OpenTopic(BSTR* Topic) noexcept {
    return Guard([&] {
        const std::string topic = ToAnsiArgument(View(Given(Topic)));
        Open(HH_DISPLAY_TOPIC, reinterpret_cast<DWORD_PTR>(topic.c_str()));
    });
}

// The window that comes back is the engine's affair.
void CHtmlHelp::Open(UINT command, DWORD_PTR data) const {
    if (!FileExists(helpFile_)) throw RuntimeError(Error::FileNotFound);
    const std::string file = ToAnsi(helpFile_);
    Engine()(WindowFrom(parent_), file.c_str(), command, data);
}

}  // namespace velk
