# Compiler flags shared by every target of the project.
add_library(hx_options INTERFACE)
add_library(hx::options ALIAS hx_options)
target_compile_features(hx_options INTERFACE cxx_std_17)
target_include_directories(hx_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(hx_options INTERFACE -Wall -Wextra -Wshadow -pedantic)
if(HX_WARNINGS_AS_ERRORS)
  target_compile_options(hx_options INTERFACE -Werror)
endif()
if(HX_SANITIZE)
  target_compile_options(hx_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  target_link_options(hx_options INTERFACE -fsanitize=address,undefined)
endif()
