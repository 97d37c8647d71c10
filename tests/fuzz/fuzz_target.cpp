// The fuzzer's program for one model, which CMake names.
#include VELK_MODEL_HEADER

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    velk::test::Bytes bytes({data, size});
    velk::test::VELK_MODEL(bytes);
    return 0;
}
