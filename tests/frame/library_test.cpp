// The built library: what its type library promises, and how it comes and goes.
#include <gtest/gtest.h>
#include <windows.h>

#include <psapi.h>

#include "platform/system_library.h"
#include "support/client.h"
#include "support/import_patch.h"
#include "support/late_bound.h"
#include "support/library_copy.h"
#include "support/malloc_spy.h"
#include "support/process_counts.h"
#include "tools/typelib/type_reader.h"

namespace velk::test {
namespace {

std::vector<Type> AllClasses() {
    std::vector<Type> all;
    for (const Type& type : TypesOf(LoadTypes(LibraryPath().c_str()))) {
        if (AttributesOf(type)->typekind == TKIND_COCLASS) all.push_back(type);
    }
    return all;
}

// The constants of enumerations are left out: the type-library compiler gives them none.
TEST(Types, HaveAHelpTextForEveryTypeAndMember) {
    for (const wchar_t* file : {L"VelkSprt.dll", L"VelkSub.dll"}) {
        for (const Type& type : TypesOf(LoadTypes(BuiltFile(file).c_str()))) {
            const Documentation about = DocumentationOf(type, MEMBERID_NIL);
            EXPECT_FALSE(about.help.empty()) << about.name;
            const Type own = OwnMembers(type);
            for (UINT i = 0; i < AttributesOf(own)->cFuncs; ++i) {
                const Documentation member = DocumentationOf(own, FunctionOf(own, i)->memid);
                EXPECT_FALSE(member.help.empty()) << about.name << L"." << member.name;
            }
        }
    }
}

// One identity behind all its faces, as the type library describes it.
void ExpectIsWhatItSays(const ComPtr<IUnknown>& object, const Type& coclass) {
    std::vector<GUID> faces = {IID_IUnknown, IID_IDispatch, IID_ISupportErrorInfo, IID_IProvideClassInfo,
                               IID_IProvideClassInfo2};
    const auto provider = object.As<IProvideClassInfo2>();
    const auto errors = object.As<ISupportErrorInfo>();
    Type named;
    GUID source = IID_IStream, events{};
    ASSERT_EQ(S_OK, provider->GetClassInfo(named.Receive()));
    EXPECT_EQ(AttributesOf(coclass)->guid, AttributesOf(named)->guid);
    for (UINT i = 0; i < AttributesOf(named)->cImplTypes; ++i) {
        INT flags = 0;
        named->GetImplTypeFlags(i, &flags);
        const GUID iid = AttributesOf(Implemented(named, i))->guid;
        if (flags & IMPLTYPEFLAG_FSOURCE)
            events = iid;
        else
            faces.push_back(iid);
        const bool isOwn = flags == IMPLTYPEFLAG_FDEFAULT;
        EXPECT_EQ(isOwn ? S_OK : S_FALSE, errors->InterfaceSupportsErrorInfo(iid));
    }
    EXPECT_EQ(S_FALSE, errors->InterfaceSupportsErrorInfo(IID_IProvideClassInfo));
    constexpr DWORD kEvents = GUIDKIND_DEFAULT_SOURCE_DISP_IID;
    EXPECT_EQ(events == GUID_NULL ? E_NOTIMPL : S_OK, provider->GetGUID(kEvents, &source));
    EXPECT_EQ(events, source);
    EXPECT_EQ(E_INVALIDARG, provider->GetGUID(kEvents + 1, &source));
    for (REFIID from : faces) {
        const auto face = object.As<IUnknown>(from);
        ASSERT_TRUE(face);
        for (REFIID to : faces) EXPECT_EQ(object.get(), face.As<IUnknown>(to).As<IUnknown>().get());
        EXPECT_EQ(E_POINTER, face->QueryInterface(IID_IUnknown, nullptr));
        void* unknown = face.get();
        EXPECT_EQ(E_NOINTERFACE, face->QueryInterface(IID_IStream, &unknown));
        EXPECT_EQ(nullptr, unknown);
    }

    const auto dispatch = object.As<IDispatch>();
    ComPtr<ITypeInfo> info;
    UINT count = 0;
    EXPECT_EQ(S_OK, dispatch->GetTypeInfoCount(&count));
    EXPECT_EQ(1u, count);
    EXPECT_EQ(S_OK, dispatch->GetTypeInfo(0, 0, info.Receive()));
    EXPECT_EQ(DISP_E_BADINDEX, dispatch->GetTypeInfo(1, 0, info.Receive()));
    EXPECT_FALSE(info);
    for (const HRESULT answer : {dispatch->GetTypeInfoCount(nullptr), dispatch->GetTypeInfo(0, 0, nullptr),
                                 provider->GetClassInfo(nullptr), provider->GetGUID(kEvents, nullptr)}) {
        EXPECT_EQ(E_POINTER, answer);
    }
}

ComPtr<IClassFactory> FactoryOf(REFCLSID clsid) {
    ComPtr<IClassFactory> factory;
    EXPECT_EQ(S_OK, GetClassObject(clsid, IID_IClassFactory, factory.ReceiveVoid()));
    return factory;
}

// While an object of any class, a factory or a lock is held; event_source_test.cpp has the parts of an event source.
TEST(Library, StaysWhileAnythingIsHeld) {
    EXPECT_TRUE(CanUnload());
    for (const Type& type : AllClasses()) {
        SCOPED_TRACE(NameOf(type));
        const ComPtr<IUnknown> object = CreateUnknown(AttributesOf(type)->guid);
        EXPECT_FALSE(CanUnload());
        ExpectIsWhatItSays(object, type);
        object->AddRef();
        EXPECT_EQ(1u, object->Release());
    }
    EXPECT_TRUE(CanUnload());
    ComPtr<IClassFactory> factory = FactoryOf(__uuidof(CCRC32));
    EXPECT_FALSE(CanUnload());
    factory = nullptr;
    for (const auto& [lock, stays] : {std::pair(TRUE, true), {TRUE, true}, {FALSE, true}, {FALSE, false}}) {
        EXPECT_EQ(S_OK, FactoryOf(__uuidof(CCRC32))->LockServer(lock));
        EXPECT_EQ(stays, !CanUnload());
    }
}

TEST(ClassFactory, RefusesWhatItCannotGiveAndEmptiesTheResult) {
    void* result = nullptr;
    const auto expect = [&](HRESULT expected, auto call) {
        result = &result;
        EXPECT_EQ(expected, call());
        EXPECT_EQ(nullptr, result);
    };
    expect(CLASS_E_CLASSNOTAVAILABLE, [&] { return GetClassObject(IID_IUnknown, IID_IClassFactory, &result); });
    const CLSID clsid = __uuidof(CCRC32);
    const ComPtr<IClassFactory> factory = FactoryOf(clsid);
    expect(E_NOINTERFACE, [&] { return GetClassObject(clsid, IID_IDispatch, &result); });
    expect(E_NOINTERFACE, [&] { return factory->CreateInstance(nullptr, IID_IClassFactory, &result); });
    expect(CLASS_E_NOAGGREGATION, [&] { return factory->CreateInstance(factory.get(), IID_IUnknown, &result); });
    for (const HRESULT answer :
         {GetClassObject(clsid, IID_IClassFactory, nullptr), factory->QueryInterface(IID_IUnknown, nullptr),
          factory->CreateInstance(nullptr, IID_IUnknown, nullptr)}) {
        EXPECT_EQ(E_POINTER, answer);
    }
}

// Counts the heap blocks of all modules that are loaded when it is first asked. Walking the heaps does not: Wine 10
// keeps small blocks in groups, and a walk meets only these.
class HeapSpy {
  public:
    static LONG Alive() {
        static const bool installed = (Install(), true);
        return installed ? alive_.load() : 0;
    }

  private:
    static void Install() {
        HMODULE modules[256];
        DWORD size = 0;
        EXPECT_TRUE(EnumProcessModules(GetCurrentProcess(), modules, sizeof modules, &size));
        for (DWORD i = 0; i < size / sizeof *modules; ++i) {
            for (const auto& [name, own] : {std::pair("HeapAlloc", reinterpret_cast<void*>(&Alloc)),
                                            {"HeapFree", reinterpret_cast<void*>(&Free)}}) {
                if (ImportPatch::IsImported(modules[i], name)) new ImportPatch(modules[i], name, own);  // for good
            }
        }
    }
    static void* WINAPI Alloc(HANDLE heap, DWORD flags, SIZE_T size) {
        void* const block = allocate_(heap, flags, size);
        if (block) ++alive_;
        return block;
    }
    static BOOL WINAPI Free(HANDLE heap, DWORD flags, void* block) {
        if (block) --alive_;
        return free_(heap, flags, block);
    }

    // kernel32's own stubs are patched.
    static inline const HMODULE native_ = GetModuleHandleW(L"ntdll.dll");
    static inline const auto allocate_ = FindFunction<decltype(HeapAlloc)>(native_, "RtlAllocateHeap");
    static inline const auto free_ = FindFunction<decltype(HeapFree)>(native_, "RtlFreeHeap");
    static inline std::atomic<LONG> alive_ = 0;
};

// What a process that loads and unloads the library again and again would run out of.
std::vector<std::size_t> Resources() {
    std::vector<DWORD> slots;
    for (DWORD slot; (slot = TlsAlloc()) != TLS_OUT_OF_INDEXES;) slots.push_back(slot);
    for (const DWORD slot : slots) TlsFree(slot);
    return {slots.size(), OpenHandles(), static_cast<std::size_t>(MallocSpy::Alive()),
            static_cast<std::size_t>(HeapSpy::Alive())};
}

void FailInside(const LibraryCopy& library) {
    EXPECT_EQ(DISP_E_EXCEPTION, Call(library.Create(__uuidof(CDatFile)).get(), L"GetHumanReadable").result);
}

// A thread that has been in the library and is still there when it goes.
class Bystander {
  public:
    void FailInside(const LibraryCopy& library) {
        const std::pair call(&library, done_);
        QueueUserAPC(&Run, thread_, reinterpret_cast<ULONG_PTR>(&call));
        WaitForSingleObject(done_, INFINITE);
    }

  private:
    static void WINAPI Run(ULONG_PTR call) {
        const auto [library, done] = *reinterpret_cast<std::pair<const LibraryCopy*, HANDLE>*>(call);
        velk::test::FailInside(*library);
        SetEvent(done);
    }
    static DWORD WINAPI WaitForCalls(void*) {
        for (;;) SleepEx(INFINITE, TRUE);
    }
    const HANDLE done_ = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    const HANDLE thread_ = CreateThread(nullptr, 0, &WaitForCalls, nullptr, 0, nullptr);  // to the program's end
};

TEST(Library, LeavesNothingBehindInAHundredRounds) {
    const std::vector<Type> classes = AllClasses();
    ASSERT_TRUE(Library());  // stays, and what it imports with it: Wine 10's winspool.drv keeps a handle each time it
                             // is unloaded
    Bystander bystander;
    std::vector<std::size_t> before;
    for (int round = 0; round < 103; ++round) {
        {
            const LibraryCopy library;
            for (const Type& type : classes) {  // reads the interface's call plan and its type information
                const auto object = library.Create(AttributesOf(type)->guid);
                EXPECT_EQ(DISPID_UNKNOWN, IdOf(object.get(), L"NoSuchMember"));
                ComPtr<ITypeInfo> info;
                EXPECT_EQ(S_OK, object->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Receive()));
            }
            FailInside(library);
            bystander.FailInside(library);
        }
        if (round < 3) before = Resources();  // measuring takes something, too
    }
    EXPECT_EQ(before, Resources()) << "thread slots, handles, strings and arrays, blocks";
}

}  // namespace
}  // namespace velk::test
