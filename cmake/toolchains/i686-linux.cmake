# 32-bit Linux: the DLL's pointer size without Windows.

set(CMAKE_CXX_FLAGS_INIT "-m32")
set(CMAKE_C_FLAGS_INIT "-m32")
