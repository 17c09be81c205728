# Writes the text around a page's data (Velto/Page/Document.h) as C++: the page with its style sheet and its script, which
# a browser accepts by their hashes alone.
#
#   cmake -DASSETS=FOLDER -DSCRIPT=FILE:FILE... -DOUT=FILE.cpp -P Page.cmake
cmake_minimum_required(VERSION 3.25)

# What stands in a page's policy for a text: its SHA-256 in base64.
function(hash_of text result)
    set(digits ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
    string(SHA256 hex "${text}")
    string(APPEND hex 00) # 64 digits are 42 sextets and 4 bits: to whole pairs of sextets
    set(base64 "")
    foreach(at RANGE 0 63 3)
        string(SUBSTRING ${hex} ${at} 3 three)
        math(EXPR first "0x${three} >> 6")
        math(EXPR second "0x${three} & 63")
        string(SUBSTRING ${digits} ${first} 1 first)
        string(SUBSTRING ${digits} ${second} 1 second)
        string(APPEND base64 ${first}${second})
    endforeach()
    string(SUBSTRING ${base64} 0 43 base64)
    set(${result} sha256-${base64}= PARENT_SCOPE)
endfunction()

file(READ ${ASSETS}/page.html page)
file(READ ${ASSETS}/style.css style)
set(script "\"use strict\";\n")
string(REPLACE ":" ";" modules ${SCRIPT})
foreach(module IN LISTS modules)
    file(READ ${module} text)
    string(APPEND script "${text}")
endforeach()
hash_of("${style}" style_hash)
hash_of("${script}" script_hash)
string(REPLACE "@STYLE@" "${style}" page "${page}")
string(REPLACE "@SCRIPT@" "${script}" page "${page}")
string(REPLACE "@STYLE_HASH@" "${style_hash}" page "${page}")
string(REPLACE "@SCRIPT_HASH@" "${script_hash}" page "${page}")
string(FIND "${page}" "@DATA@" middle)
string(SUBSTRING "${page}" 0 ${middle} begin)
math(EXPR behind "${middle} + 6")
string(SUBSTRING "${page}" ${behind} -1 end)
file(WRITE ${OUT} "#include \"Velto/Page/Document.h\"

namespace VeltoTouch::Page {

const std::string_view kDocumentBegin = R\"velto(${begin})velto\";
const std::string_view kDocumentEnd = R\"velto(${end})velto\";

} // namespace VeltoTouch::Page
")
