# Header-only libraries serve every target, but a cross compiler does not look where the system keeps them (and must not
# see the system's other headers): each gets a folder of its own with one link in it.
function(quorvel_header_only target folder)
    find_path(QUORVEL_${target}_INCLUDE ${folder} PATHS /usr/include /usr/local/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    set(place ${CMAKE_BINARY_DIR}/header-only/${target})
    file(MAKE_DIRECTORY ${place})
    file(CREATE_LINK ${QUORVEL_${target}_INCLUDE}/${folder} ${place}/${folder} SYMBOLIC)
    add_library(${target} INTERFACE)
    target_include_directories(${target} SYSTEM INTERFACE ${place})
endfunction()
quorvel_header_only(quorvel_json nlohmann)
quorvel_header_only(quorvel_cli11 CLI)
