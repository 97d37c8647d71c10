#include "sysinfo/api_disks.h"

#include <utility>

#include "platform/files.h"
#include "platform/system_library.h"
#include "platform/text.h"
#include "sysinfo/drive_facts.h"
#include "sysinfo/hex_text.h"

namespace velk {
namespace {

constexpr DWORD kBufferSize = 255;

std::string Buffer() { return std::string(kBufferSize, ' '); }

struct Space {
    double free = 0;  // for the caller
    double total = 0;
};

// A count of bytes travels as a signed number.
double Bytes(const ULARGE_INTEGER& count) noexcept {
    return static_cast<double>(static_cast<LONGLONG>(count.QuadPart));
}

Space OlderSpaceOf(const std::string& root) noexcept {
    DWORD sectorsPerCluster = 0, bytesPerSector = 0, freeClusters = 0, clusters = 0;
    if (!GetDiskFreeSpaceA(root.c_str(), &sectorsPerCluster, &bytesPerSector, &freeClusters, &clusters))
        return {-1, -1};
    const double cluster = static_cast<double>(bytesPerSector) * sectorsPerCluster;
    return {cluster * freeClusters, cluster * clusters};
}

// A failure is 0 where the extended query exists and -1 where only the older one does. Deliberate.
Space SpaceBy(HMODULE kernel, const std::string& root) noexcept {
    if (!kernel) return {};
    const auto extended = FindFunction<decltype(GetDiskFreeSpaceExA)>(kernel, "GetDiskFreeSpaceExA");
    if (!extended) return OlderSpaceOf(root);
    ULARGE_INTEGER free{}, total{}, freeForAll{};
    extended(root.c_str(), &free, &total, &freeForAll);
    return {Bytes(free), Bytes(total)};
}

Space SpaceOf(const std::string& root) noexcept {
    const NoDiskPrompts quiet;
    const HMODULE kernel = LoadSystemLibrary(L"kernel32.dll");
    const Space space = SpaceBy(kernel, root);
    FreeLibrary(kernel);  // by hand on purpose: also when loading failed, which an owning type would pass over
    return space;
}

}  // namespace

struct CAPIDisks::Volume {
    std::string root;
    BOOL readable = FALSE;
    DWORD lastError = 0;
    std::string label = Buffer();
    std::string fileSystem = Buffer();
    DWORD serial = 0;
    DWORD flags = 0;

    explicit Volume(std::string path) : root(std::move(path)) {
        const NoDiskPrompts quiet;
        DWORD componentLength = 0;
        SetLastError(0);  // what an earlier call left must not count
        readable = GetVolumeInformationA(root.c_str(), label.data(), kBufferSize, &serial, &componentLength, &flags,
                                         fileSystem.data(), kBufferSize);
        lastError = GetLastError();
    }
};

constinit const ClassInfo CAPIDisks::kInfo{
    .name = L"CAPIDisks",
    .clsid = __uuidof(::CAPIDisks),
    .iid = __uuidof(_CAPIDisks),
    .policy = FailurePolicy::Report,
};

std::string CAPIDisks::Root(SHORT position) const noexcept {
    std::string root;
    GuardAs("LogicalDrives", [&] {
        std::string list = Buffer();
        const DWORD length = GetLogicalDriveStringsA(kBufferSize, list.data());
        root = RootAt(list, length, position);
    });
    return root;
}

std::optional<CAPIDisks::Volume> CAPIDisks::GetDriveInfo(SHORT position) const noexcept {
    std::optional<Volume> volume;
    Guard([&] {
        Volume found(Root(position));
        if (found.readable) volume = std::move(found);
    });
    return volume;
}

template <class T, class Fact>
HRESULT CAPIDisks::ReadVolume(SHORT* position, T* result, Fact fact, const char* member) const noexcept {
    return GuardAs(member, result, [&] {
        const auto volume = GetDriveInfo(Given(position));
        return volume ? fact(*volume) : decltype(fact(*volume))();
    });
}

STDMETHODIMP CAPIDisks::get_DiskFreeSpace(SHORT* intValue, DOUBLE* result) noexcept {
    return Guard(result, [&] { return SpaceOf(Root(Given(intValue))).free; });
}

STDMETHODIMP CAPIDisks::get_DiskTotalSpace(SHORT* intValue, DOUBLE* result) noexcept {
    return Guard(result, [&] { return SpaceOf(Root(Given(intValue))).total; });
}

STDMETHODIMP CAPIDisks::get_DriveFileSystemType(SHORT* intValue, BSTR* result) noexcept {
    return ReadVolume(intValue, result, [](const Volume& volume) { return FromAnsiBuffer(volume.fileSystem); });
}

STDMETHODIMP CAPIDisks::get_DriveFlags(SHORT* intValue, LONG* result) noexcept {
    return ReadVolume(intValue, result, [](const Volume& volume) { return static_cast<LONG>(volume.flags); });
}

STDMETHODIMP CAPIDisks::get_DriveLabel(SHORT* intValue, BSTR* result) noexcept {
    return ReadVolume(intValue, result, [](const Volume& volume) { return FromAnsiBuffer(volume.label); });
}

STDMETHODIMP CAPIDisks::get_DriveSerialNumber(SHORT* intValue, BSTR* result) noexcept {
    return ReadVolume(intValue, result, [](const Volume& volume) { return FromAnsiBuffer(HexText(volume.serial)); });
}

// The type is asked for only when the volume can be read, so an empty CD drive has type 0.
STDMETHODIMP CAPIDisks::get_DriveType(SHORT* intValue, LONG* result) noexcept {
    return ReadVolume(intValue, result,
                      [](const Volume& volume) { return static_cast<LONG>(GetDriveTypeA(volume.root.c_str())); });
}

STDMETHODIMP CAPIDisks::get_LogicalDrives(SHORT* intValue, BSTR* result) noexcept {
    return Guard(result, [&] { return FromAnsiBuffer(Root(Given(intValue))); });
}

STDMETHODIMP CAPIDisks::DriveLetterFromNumber(SHORT* intDrive, BSTR* result) noexcept {
    return Guard(result, [&] {
        const char letter = DriveLetter(Given(intDrive));
        return Bstr(Wide(FromAnsi({&letter, 1})));
    });
}

STDMETHODIMP CAPIDisks::DriveTypeToString(LONG* lngDriveType, BSTR* result) noexcept {
    return Guard(result, [&] { return FromAnsiBuffer(DriveTypeText(Given(lngDriveType))); });
}

STDMETHODIMP CAPIDisks::GetDriveCount(SHORT* result) noexcept {
    return Guard(result, [&] { return static_cast<SHORT>(CountDrives(GetLogicalDrives())); });
}

STDMETHODIMP CAPIDisks::IsDriveReady(SHORT* intDrive, VARIANT_BOOL* result) noexcept {
    return Guard(result, [&] { return Volume(Root(Given(intDrive))).lastError == 0; });
}

STDMETHODIMP CAPIDisks::VolumeFlagsToString(LONG* lngFlags, BSTR* result) noexcept {
    return Guard(result, [&] { return FromAnsiBuffer(VolumeFlagsText(static_cast<std::uint32_t>(Given(lngFlags)))); });
}

std::optional<std::vector<Variant>> CAPIDisks::Items() {
    std::vector<Variant> roots;
    for (SHORT position = 0;; ++position) {
        const std::string root = Root(position);
        if (root.empty()) return roots;
        roots.emplace_back();
        roots.back().bstrVal = FromAnsiBuffer(root).Detach();
        roots.back().vt = VT_BSTR;
    }
}

STDMETHODIMP CAPIDisks::WriteVolumeLabel(SHORT* intDrive, BSTR* strLabel) noexcept {
    return Guard([&] {
        const NoDiskPrompts quiet;
        const std::string label = ToAnsi(View(Given(strLabel)));
        SetVolumeLabelA(Root(Given(intDrive)).c_str(), label.c_str());
    });
}

}  // namespace velk
