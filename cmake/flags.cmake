# Compiler options for all targets of this tree.
add_library(outpost_flags INTERFACE)
target_compile_definitions(outpost_flags INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_BYTEARRAY QT_DEPRECATED_WARNINGS)
target_compile_options(outpost_flags INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # As with g++, whose -Wconversion does not include it for C++.
    target_compile_options(outpost_flags INTERFACE -Wno-sign-conversion)
endif()
if(OUTPOST_WERROR)
    target_compile_options(outpost_flags INTERFACE -Werror)
endif()

if(OUTPOST_SANITIZE)
    set(sanitize -fsanitize=${OUTPOST_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(outpost_flags INTERFACE ${sanitize})
    # With sanitizers, GCC takes values in a std::optional for uninitialized; see its manual.
    target_compile_options(outpost_flags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    target_link_options(outpost_flags INTERFACE ${sanitize})
endif()

if(OUTPOST_COVERAGE)
    target_compile_options(outpost_flags INTERFACE --coverage -fprofile-update=atomic)
    target_link_options(outpost_flags INTERFACE --coverage)
endif()

# Hardening for released programs; sanitizer builds have their own checks.
if(CMAKE_BUILD_TYPE STREQUAL "Release" AND NOT WIN32)
    set(CMAKE_POSITION_INDEPENDENT_CODE ON)
    target_compile_options(outpost_flags INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2
        -D_GLIBCXX_ASSERTIONS -fstack-protector-strong -fstack-clash-protection -fcf-protection)
    target_link_options(outpost_flags INTERFACE -pie -Wl,-z,relro,-z,now)
endif()
