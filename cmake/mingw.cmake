# Windows from Linux: mingw-w64 with the posix thread model, programs run under Wine. The including file sets the processor.
set(triplet ${CMAKE_SYSTEM_PROCESSOR}-w64-mingw32)
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_C_COMPILER ${triplet}-gcc-posix)  # the test library asks for one
set(CMAKE_CXX_COMPILER ${triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${triplet}-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../tools/wine_run)
