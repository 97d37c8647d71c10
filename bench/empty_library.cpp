// What loading any library of this toolchain costs: the measure for loading ours.
extern "C" __declspec(dllexport) int Nothing() { return 0; }
