# Toolchain for the gateway's processor: 32-bit ARM with hardware floating point, which Debian calls armhf. Debian's
# cross compiler provides the C and C++ libraries. scripts/armhf-sysroot fetches the other libraries.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_CXX_COMPILER arm-linux-gnueabihf-g++)

set(sysroot ${CMAKE_CURRENT_LIST_DIR}/../build/armhf-sysroot)
cmake_path(NORMAL_PATH sysroot)
if(NOT EXISTS ${sysroot}/.filled)
  message(FATAL_ERROR "There are no armhf libraries yet: run scripts/setup build arm, then scripts/armhf-sysroot")
endif()
set(CMAKE_FIND_ROOT_PATH ${sysroot})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} ${sysroot}/usr/lib/arm-linux-gnueabihf/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${sysroot})

# The folders in which the linker looks for the libraries that libcurl needs.
set(CMAKE_EXE_LINKER_FLAGS_INIT
  "-Wl,-rpath-link,${sysroot}/usr/lib/arm-linux-gnueabihf:${sysroot}/lib/arm-linux-gnueabihf")

# Programs must not contain the path of the sysroot. Without this line CMake replaces the path by padding.
set(CMAKE_SKIP_RPATH ON)

# -Wno-psabi: GCC 7.1 changed how some arguments are passed, but veld does not link code of older compilers. -idirafter: this
# folder contains the library headers that differ between processors.
set(CMAKE_CXX_FLAGS_INIT "-Wno-psabi -idirafter ${sysroot}/usr/include/arm-linux-gnueabihf")

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L ${sysroot})
