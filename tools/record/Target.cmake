# The preloaded recorder. It does not link the desk, and hides its copies of the code that it shares
# with the tools. Its cost is measured without the desk.
set(VELK_TOOLS_FOLDER ${PROJECT_SOURCE_DIR}/tools)
add_library(velkrecord SHARED
    ${VELK_TOOLS_FOLDER}/record/Interposer.cpp
    ${VELK_TOOLS_FOLDER}/record/Messages.cpp
    ${VELK_TOOLS_FOLDER}/record/Recorder.cpp
    ${VELK_TOOLS_FOLDER}/record/RecordingFile.cpp
    ${VELK_TOOLS_FOLDER}/record/ThreadNames.cpp
    ${VELK_TOOLS_FOLDER}/session/SessionLine.cpp
    ${PROJECT_SOURCE_DIR}/host/text/PrintableText.cpp)
target_include_directories(velkrecord PRIVATE
    ${VELK_TOOLS_FOLDER} ${PROJECT_SOURCE_DIR}/host ${PROJECT_SOURCE_DIR}/include
    ${PROJECT_SOURCE_DIR}/src)
target_link_libraries(velkrecord PRIVATE fmt::fmt-header-only ${CMAKE_DL_LIBS} Threads::Threads)
set_target_properties(velkrecord PROPERTIES
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
