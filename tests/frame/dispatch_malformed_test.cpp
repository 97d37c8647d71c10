// Calls that no proper client makes: each gets an answer.
#include "frame/shapes_test.h"

namespace velk::test {
namespace {

using DispatchMalformed = ShapesTest;

TEST_F(DispatchMalformed, UnknownMembersAndInterfaces) {
    DISPPARAMS none{};
    for (const DISPID id : {-1, 0, 34, 999, 0x10000, static_cast<int>(0x80000000), 0x7FFFFFFF}) {
        Variant result;
        EXPECT_EQ(DISP_E_MEMBERNOTFOUND,
                  shapes_->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &none, &result, nullptr, nullptr))
            << id;
    }
    EXPECT_EQ(DISP_E_UNKNOWNINTERFACE,
              shapes_->Invoke(26, IID_IDispatch, 0, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr));
    EXPECT_EQ(DISP_E_MEMBERNOTFOUND, shapes_->Invoke(26, IID_NULL, 0, 0, &none, nullptr, nullptr, nullptr));
}

TEST_F(DispatchMalformed, ParameterBlocks) {
    VARIANT one = Arg(5L);
    DISPID first = 0;
    struct Case {
        DISPPARAMS parameters;
        HRESULT result;
    };
    Case cases[] = {
        {{&one, nullptr, 1, 0}, S_OK},
        {{&one, &first, 1, 1}, S_OK},
        {{nullptr, nullptr, 1, 0}, DISP_E_BADPARAMCOUNT},
        {{&one, nullptr, 1, 1}, DISP_E_BADPARAMCOUNT},
        {{&one, &first, 1, 2}, DISP_E_BADPARAMCOUNT},
        {{&one, &first, 0, 1}, DISP_E_BADPARAMCOUNT},
        {{&one, nullptr, 0xFFFFFFFF, 0}, DISP_E_BADPARAMCOUNT},
        {{nullptr, nullptr, 0, 0}, DISP_E_PARAMNOTOPTIONAL},
    };
    for (Case& c : cases) {
        VARIANT result = Arg(77L);
        EXPECT_EQ(c.result, shapes_->Invoke(2, IID_NULL, 0, DISPATCH_METHOD, &c.parameters, &result, nullptr, nullptr));
        EXPECT_EQ(FAILED(c.result) ? L"0:" : L"3:5", Describe(result));
        EXPECT_EQ(c.result, shapes_->Invoke(2, IID_NULL, 0, DISPATCH_METHOD, &c.parameters, nullptr, nullptr, nullptr));
    }
    EXPECT_EQ(DISP_E_BADPARAMCOUNT,
              shapes_->Invoke(2, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr));
}

constexpr const wchar_t* kMembers[] = {L"EchoLong", L"EchoString", L"EchoVariant", L"EchoObject", L"EchoFont",
                                       L"BumpLong", L"BumpString", L"BumpVariant", L"SwapObject", L"SwapFont"};

TEST_F(DispatchMalformed, ReferencesToNothing) {
    VARIANT inner = Arg(1L), outer = Arg(&inner);
    std::vector<VARIANT> bad = {Arg(&outer)};  // a variable behind a variable
    for (const int type : {+VT_I4, +VT_BSTR, +VT_R8, +VT_VARIANT, +VT_DISPATCH, +VT_UNKNOWN, VT_ARRAY | VT_BSTR}) {
        bad.push_back(Ref(static_cast<VARTYPE>(type), nullptr));
    }
    for (VARIANT& argument : bad) {
        for (const wchar_t* member : kMembers) {
            SCOPED_TRACE(testing::Message() << member << " " << argument.vt);
            EXPECT_EQ(DISP_E_TYPEMISMATCH, Call(shapes_.get(), member, {argument}).result);
            EXPECT_EQ(DISP_E_TYPEMISMATCH, Call(shapes_.get(), member, {Arg(&argument)}).result);
        }
        EXPECT_EQ(DISP_E_TYPEMISMATCH, Call(shapes_.get(), L"FillStrings", {argument, Arg(1L)}).result) << argument.vt;
    }
}

TEST_F(DispatchMalformed, TypesThatDoNotExist) {
    for (const VARTYPE type : {VARTYPE{VT_VARIANT}, VARTYPE{0x0FFF}}) {
        for (const wchar_t* member : kMembers) {
            SCOPED_TRACE(testing::Message() << member << " " << type);
            VARIANT argument = Arg(1L);
            argument.vt = type;
            EXPECT_EQ(DISP_E_BADVARTYPE, Call(shapes_.get(), member, {argument}).result);
            EXPECT_TRUE(FAILED(Call(shapes_.get(), member, {Arg(&argument)}).result));
        }
    }
}

}  // namespace
}  // namespace velk::test
