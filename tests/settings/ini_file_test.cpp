// Arrays as compiled clients hand them to CIniFile. What scripts see of it is in ini_file.facts.
#include "support/client.h"
#include "support/late_bound.h"
#include "support/scratch_folder.h"

namespace velk::test {
namespace {

TEST(IniFile, LeavesAnArrayThatIsNotToBeReplaced) {
    const ScratchFolder folder;
    const auto ini = CreateObject<IDispatch>(__uuidof(::CIniFile));
    Call(ini.get(), L"Init", {Text(folder.Write(L"file.ini", "[A]\r\nk=1\r\n"))});
    const auto enumerate = [&](VARIANT array) { return Call(ini.get(), L"EnumerateAllSections", {array}); };
    Variant names, variable;
    names.vt = VT_ARRAY | VT_BSTR;
    for (const VARIANT given : {Ref(names.vt, &names.parray), Arg(&variable)}) {
        ASSERT_EQ(1, enumerate(given).value.lVal);
        SAFEARRAY* const array = given.vt & VT_ARRAY ? *given.pparray : variable.parray;
        for (const USHORT feature : {0, FADF_AUTO, FADF_STATIC, FADF_EMBEDDED, FADF_FIXEDSIZE}) {  // 0: locked
            array->fFeatures |= feature;
            array->cLocks = feature ? 0 : 1;
            EXPECT_EQ(eErrIniFile_ComponentFailure, enumerate(given).code) << feature;
            array->fFeatures &= ~feature;
        }
    }
}

}  // namespace
}  // namespace velk::test
