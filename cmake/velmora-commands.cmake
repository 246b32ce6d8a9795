# Writes the COMMANDS and EXIT STATUS sections of velmora(1) for help2man, from what the
# program says: the commands that `velmora --help` lists, each with its own --help.
#   cmake -DVELMORA=path/to/velmora -DOUTPUT=file.h2m -P velmora-commands.cmake
# The page is English: the program is asked in the C locale, whatever the builder's.
set(ENV{LC_ALL} C.UTF-8)
unset(ENV{LANGUAGE})
execute_process(COMMAND ${VELMORA} --help OUTPUT_VARIABLE help RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "${VELMORA} --help failed")
endif()

# roff: a backslash is \e, and a line may not begin with a dot or a quote.
function(to_roff text out)
  string(REPLACE "\\" "\\e" text "${text}")
  string(REGEX REPLACE "(^|\n)([.'])" "\\1\\\\&\\2" text "${text}")
  set(${out} "${text}" PARENT_SCOPE)
endfunction()

set(page "[COMMANDS]\n")
string(REGEX MATCH "\nCommands:\n(( +[^\n]*\n)+)" listed "${help}")
string(REGEX MATCHALL "(^|\n)  [a-z]+" names "${CMAKE_MATCH_1}")
foreach(name IN LISTS names)
  string(STRIP "${name}" name)
  execute_process(COMMAND ${VELMORA} ${name} --help OUTPUT_VARIABLE usage RESULT_VARIABLE failed)
  if(failed)
    message(FATAL_ERROR "${VELMORA} ${name} --help failed")
  endif()
  to_roff("${usage}" usage)
  string(APPEND page ".SS ${name}\n.nf\n${usage}.fi\n")
endforeach()
if(NOT names)
  message(FATAL_ERROR "${VELMORA} --help lists no command")
endif()

string(REGEX MATCH "Exit status: ([^\n]*)" status "${help}")
if(status)
  to_roff("${CMAKE_MATCH_1}" status)
  string(APPEND page "[EXIT STATUS]\n${status}\n")
endif()
file(WRITE ${OUTPUT} "${page}")
