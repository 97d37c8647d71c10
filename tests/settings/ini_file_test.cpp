// CIniFile where it depends on more than its files' bytes, which ini_file.facts is about.
#include "platform/text.h"
#include "support/departures.h"
#include "support/late_bound.h"
#include "support/library_copy.h"

namespace velk::test {
namespace {

TEST(IniFile, IsBesideTheLibraryAtFirst) {
    const ScratchFolder scratch;
    for (const std::wstring& folder : {scratch.path(), std::wstring(L"C:\\")}) {  // there the separator stands twice
        const LibraryCopy copy(folder + L"\\VelkBeside.dll");
        EXPECT_EQ(folder + L"\\MyFileSettings.ini", Fact(copy.Create(__uuidof(::CIniFile)).get(), L"Filename"));
    }
}

class RealIniFile : public testing::Test {
  protected:
    RealIniFile() { Call(ini_.get(), L"Init", {Text(path_)}); }
    Outcome Sections(VARIANT array) { return Call(ini_.get(), L"EnumerateAllSections", {array}); }

    ComPtr<IDispatch> ini_ = CreateObject<IDispatch>(__uuidof(::CIniFile));
    ScratchFolder folder_;
    const std::wstring path_ = folder_.Write(L"file.ini", "[A]\r\nk=1\r\n");
    Variant names_, variable_;
};

TEST_F(RealIniFile, LeavesAnArrayThatIsNotToBeReplaced) {
    names_.vt = VT_ARRAY | VT_BSTR;
    for (const VARIANT given : {Ref(names_.vt, &names_.parray), Arg(&variable_)}) {
        ASSERT_EQ(1, Sections(given).value.lVal);
        SAFEARRAY* const array = given.vt & VT_ARRAY ? *given.pparray : variable_.parray;
        for (const USHORT feature : {0, FADF_AUTO, FADF_STATIC, FADF_EMBEDDED, FADF_FIXEDSIZE}) {  // 0: locked
            array->fFeatures |= feature;
            array->cLocks = feature ? 0 : 1;
            EXPECT_EQ(eErrIniFile_ComponentFailure, Sections(given).code) << feature;
            array->fFeatures &= ~feature;
        }
    }
}

TEST_F(RealIniFile, IsReadAndWrittenByThePlatform) {
    SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_READONLY);
    const bool writable = Departs("FILE_ATTRIBUTE_READONLY") && _wgetenv(L"USERNAME") == std::wstring(L"root");
    EXPECT_EQ(writable ? L"True" : L"False", Fact(ini_.get(), L"DeleteSection", {Text(L"A")}));
    SetFileAttributesW(path_.c_str(), FILE_ATTRIBUTE_NORMAL);
    folder_.Write(L"file.ini", "\xEF\xBB\xBF[A]\r\n");
    EXPECT_EQ(Departs("GetPrivateProfileString") ? 1 : 0, Sections(Arg(&variable_)).value.lVal);
}

}  // namespace
}  // namespace velk::test
