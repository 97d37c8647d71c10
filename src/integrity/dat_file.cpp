#include "integrity/dat_file.h"

#include "frame/failure/report.h"
#include "integrity/crc32_engine.h"
#include "integrity/dat_seal.h"
#include "platform/files.h"
#include "platform/numbers.h"
#include "platform/whole_numbers.h"

namespace velk {
namespace {

// These three carry the library's name as their source and belong to no enumeration.
constexpr ClassError kNoSuchFile(static_cast<HRESULT>(0x80042714), L"File does not exist.", ErrorSource::Library);
constexpr ClassError kCorrupt(static_cast<HRESULT>(0x80042715), L".Dat file corrupt.", ErrorSource::Library);
constexpr ClassError kNotInitialised(static_cast<HRESULT>(0x80042716), L"Object not initialized", ErrorSource::Library);

// The resources of the user's language, from another library; most machines have none.
ComPtr<IUnknown> CreateResources() {
    const std::wstring name = L"Velk" + DecimalText(GetUserDefaultLCID()) + L".Resources";
    CLSID clsid;
    ComPtr<IUnknown> resources;
    if (SUCCEEDED(CLSIDFromProgID(name.c_str(), &clsid))) {
        CoCreateInstance(clsid, nullptr, CLSCTX_SERVER, IID_IUnknown, resources.ReceiveVoid());
    }
    return resources;
}

// Over the UTF-16 code units of the text, not over the file's bytes.
LONG SealOf(std::u16string_view text) {
    const std::u16string_view region = SealedRegion(text);
    return static_cast<LONG>(~crc32::Update(crc32::kSeed, region.data(), region.size() * sizeof(char16_t)));
}

}  // namespace

constinit const ClassInfo CDatFile::kInfo{
    .name = L"CDatFile",
    .clsid = __uuidof(::CDatFile),
    .iid = __uuidof(_CDatFile),
    .policy = FailurePolicy::PassOn,
    .creationFailed = L"An error has occured in VelkSupport.CDatFile.Class_Initialize ",
};

void CDatFile::OnCreate() { resources_ = CreateResources(); }

STDMETHODIMP CDatFile::GetHumanReadable(BSTR* result) noexcept {
    return Guard(result, [&] { return Lookup(u".HR"); });
}

STDMETHODIMP CDatFile::GetIndicatorReadable(BSTR* result) noexcept {
    return Guard(result, [&] { return Lookup(u".IND"); });
}

STDMETHODIMP CDatFile::Initialize(BSTR* Filename, VARIANT_BOOL* DisplayCRC) noexcept {
    return Guard([&] {
        const std::wstring path = TextOf(Given(Filename));
        initialised_ = true;
        if (!FileExists(path)) throw kNoSuchFile;
        std::u16string text = GetFile(path);
        if (!entries_) entries_.emplace();
        entries_->Parse(std::move(text));
        if (!SealHolds(DisplayCRC && *DisplayCRC)) throw kCorrupt;
    });
}

STDMETHODIMP CDatFile::get_DatFileCRC(BSTR* result) noexcept {
    return Guard(result, [&] {
        RequireInitialised();
        return Bstr(crc_);
    });
}

STDMETHODIMP CDatFile::get_Parameter(BSTR* result) noexcept {
    return Guard(result, [&] {
        RequireInitialised();
        return Bstr(parameter_);
    });
}

STDMETHODIMP CDatFile::put_Parameter(BSTR* strParameter) noexcept {
    return Guard([&] {
        std::wstring parameter = TextOf(Given(strParameter));
        RequireInitialised();
        parameter_ = std::move(parameter);
    });
}

void CDatFile::RequireInitialised() const {
    if (!initialised_) throw kNotInitialised;
}

Bstr CDatFile::Lookup(std::u16string_view suffix) const {
    RequireInitialised();
    if (!entries_) throw RuntimeError(Error::ObjectNotSet);
    return Bstr(Wide(entries_->Find(Utf16(parameter_), suffix).value_or(u"")));
}

bool CDatFile::SealHolds(bool display) {
    const std::u16string stored(entries_->Find(u"@CRC").value_or(u""));
    if (stored.empty()) return false;
    const LONG seal = SealOf(entries_->text());
    const std::wstring sealText = DecimalText(seal);
    if (display) ShowMessage((L"File CRC: " + sealText).c_str(), nullptr);
    crc_ = sealText;
    return seal == LongFromText(Wide(stored));
}

}  // namespace velk
