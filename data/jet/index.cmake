# The index layer of target jet, and the tables of character weights, made from their data while building.
target_sources(jet PRIVATE
    compare_text.cpp
    index_build.cpp
    index_change.cpp
    index_check.cpp
    index_key.cpp
    index_page.cpp
    index_tree.cpp
    text_key.cpp
    ${CMAKE_CURRENT_BINARY_DIR}/sort_keys.cpp)

add_executable(sort_keys_generator sort_keys_generator.cpp)
target_link_libraries(sort_keys_generator PRIVATE spares_options)
add_custom_command(
    OUTPUT ${CMAKE_CURRENT_BINARY_DIR}/sort_keys.cpp
    COMMAND sort_keys_generator ${CMAKE_CURRENT_SOURCE_DIR}/sort_keys_jet3.csv
            ${CMAKE_CURRENT_SOURCE_DIR}/sort_keys_jet4.csv ${CMAKE_CURRENT_BINARY_DIR}/sort_keys.cpp
    DEPENDS sort_keys_generator sort_keys_jet3.csv sort_keys_jet4.csv
    COMMENT "Writing the tables of character weights")
