# Runs the shell once and checks what it did: cmake -P check.cmake with
#   PROGRAM      the shell
#   ARGS         its arguments (a list)
#   INPUT        file for standard input (default: empty)
#   STATUS       expected exit status
#   STDOUT       file with the exact expected standard output (optional)
#   STDERR       regular expression standard error must match (optional)
#   FORBID       regular expression standard error must not match (optional)
#   BARE         ON: run a copy of the program that has no bundled jars beside it
#   STDOUT_INTO  full: standard output is /dev/full; closed-pipe: a pipe nobody reads
#   NAME         the test's name, for its files in the working directory
cmake_minimum_required(VERSION 3.25)

set(program "${PROGRAM}")
if(BARE)
  set(bare_dir "${CMAKE_CURRENT_BINARY_DIR}/${NAME}.bare")
  file(REMOVE_RECURSE "${bare_dir}")
  file(COPY "${PROGRAM}" DESTINATION "${bare_dir}/bin")
  get_filename_component(name "${PROGRAM}" NAME)
  set(program "${bare_dir}/bin/${name}")
endif()
if(NOT INPUT)
  set(INPUT /dev/null)
endif()

set(wrap "")
if(STDOUT_INTO STREQUAL "full")
  set(wrap sh -c "exec \"$0\" \"$@\" >/dev/full")
elseif(STDOUT_INTO STREQUAL "closed-pipe")
  set(fifo "${CMAKE_CURRENT_BINARY_DIR}/${NAME}.fifo")
  file(REMOVE "${fifo}")
  # Opened for writing while a reader that is closed at once holds it open.
  set(wrap ${CMAKE_COMMAND} -E env "FIFO=${fifo}"
    sh -c "mkfifo \"$FIFO\" && exec \"$0\" \"$@\" 3<>\"$FIFO\" 4>\"$FIFO\" 3<&- >&4")
endif()

execute_process(COMMAND ${wrap} "${program}" ${ARGS}
  INPUT_FILE "${INPUT}" OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE status)

set(failed "")
if(NOT status STREQUAL STATUS)
  string(APPEND failed "exit status ${status}, expected ${STATUS}\n")
endif()
if(STDOUT)
  file(READ "${STDOUT}" expected)
  if(NOT out STREQUAL expected)
    file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/${NAME}.actual" "${out}")
    execute_process(COMMAND diff -u "${STDOUT}" "${CMAKE_CURRENT_BINARY_DIR}/${NAME}.actual" OUTPUT_VARIABLE diff)
    string(APPEND failed "standard output differs from ${STDOUT}:\n${diff}")
  endif()
endif()
if(STDERR AND NOT err MATCHES "${STDERR}")
  string(APPEND failed "standard error does not match \"${STDERR}\"\n")
endif()
if(FORBID AND err MATCHES "${FORBID}")
  string(APPEND failed "standard error matches \"${FORBID}\"\n")
endif()
if(failed)
  message(FATAL_ERROR "${program} ${ARGS}\n${failed}standard error:\n${err}")
endif()
