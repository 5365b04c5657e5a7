# Makes a C++ source that contains texts:
#   cmake -D OUTPUT=FILE -D PARTS="NAME=FILE,FILE;NAME=FILE" -P EmbedText.cmake
# Each NAME becomes a std::string_view in namespace desk with the joined content of its files.
set(source "#include \"report/page/PageParts.h\"\n\nnamespace desk {\n")
foreach(part IN LISTS PARTS)
    string(REGEX MATCH "^([^=]+)=(.*)$" matched "${part}")
    set(name "${CMAKE_MATCH_1}")
    string(REPLACE "," ";" files "${CMAKE_MATCH_2}")
    string(APPEND source "\nconst std::string_view ${name} =")
    foreach(file IN LISTS files)
        file(READ "${file}" text)
        string(APPEND source "\n        R\"velkpage(${text})velkpage\"")
    endforeach()
    string(APPEND source ";\n")
endforeach()
string(APPEND source "\n}  // namespace desk\n")
file(WRITE "${OUTPUT}" "${source}")
