# Warning and sanitizer flags shared by every target of the project.

add_compile_options(-Wall -Wextra)
if(QVKIT_WERROR)
    add_compile_options(-Werror)
endif()

if(QVKIT_SANITIZE)
    add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    add_link_options(-fsanitize=address,undefined)
endif()

if(QVKIT_FUZZ)
    if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
        message(FATAL_ERROR "QVKIT_FUZZ needs Clang: configure with -DCMAKE_CXX_COMPILER=clang++")
    endif()
    # The library is instrumented for coverage; only the fuzz targets link libFuzzer's main.
    add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer)
    add_link_options(-fsanitize=address,undefined)
endif()
