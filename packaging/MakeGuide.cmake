# Makes a page of HTML from a guide: cmake -D CMARK=... -D GUIDE=x.md -D STYLE=x.css -D LANGUAGE=en -D PAGE=x.html -P MakeGuide.cmake
# The guides name one another as they lie in docs/; on the page they name pages. Headings get the names that links within the guide use.
file(READ ${STYLE} style)
execute_process(COMMAND ${CMARK} -e table --unsafe ${GUIDE} OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "href=\"(user-guide[a-z.]*)\\.md" "href=\"\\1.html" body "${body}")
string(REGEX MATCHALL "<h[23]>[^<]+</h[23]>" headings "${body}")
foreach(heading IN LISTS headings)
    string(REGEX REPLACE "<h[23]>(.*)</h[23]>" "\\1" text "${heading}")
    string(TOLOWER "${text}" name)
    string(REGEX REPLACE "[:,.?!()]" "" name "${name}")
    string(REPLACE " " "-" name "${name}")
    string(REGEX REPLACE "<h([23])>.*" "<h\\1 id=\"${name}\">${text}</h\\1>" named "${heading}")
    string(REPLACE "${heading}" "${named}" body "${body}")
endforeach()
string(REGEX MATCH "<h1>([^<]*)</h1>" title "${body}")
file(WRITE ${PAGE} "<!DOCTYPE html>
<html lang=\"${LANGUAGE}\">
<head>
<meta charset=\"utf-8\">
<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">
<title>${CMAKE_MATCH_1} - Orvanta Lumivault</title>
<style>
${style}</style>
</head>
<body>
${body}</body>
</html>
")
