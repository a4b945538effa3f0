# One place for the language level, warnings and Qt defines of every target.
add_library(kestrel_settings INTERFACE)
target_compile_features(kestrel_settings INTERFACE cxx_std_20)
target_compile_options(kestrel_settings INTERFACE -Wall -Wextra -Wpedantic)
target_compile_definitions(kestrel_settings INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_KEYWORDS
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
    QT_NO_URL_CAST_FROM_STRING)

if(CI_WERROR)
    target_compile_options(kestrel_settings INTERFACE -Werror)
endif()

if(KESTREL_SANITIZE)
    target_compile_options(kestrel_settings INTERFACE
        -fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
    target_link_options(kestrel_settings INTERFACE -fsanitize=address,undefined)
endif()

if(KESTREL_BUILD_FUZZ)
    # Coverage for libFuzzer in every library the fuzz targets link; undefined
    # behaviour stops the run like any other crash.
    target_compile_options(kestrel_settings INTERFACE
        -fsanitize=fuzzer-no-link,address,undefined -fno-omit-frame-pointer
        -fno-sanitize-recover=undefined)
    target_link_options(kestrel_settings INTERFACE -fsanitize=address,undefined)
endif()
