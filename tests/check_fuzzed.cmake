# Every export that decodes an answer (READERS: the description's list, one name per
# line) is called by the response fuzzer (FUZZER), so a new reading export cannot go
# unfuzzed.
file(STRINGS ${READERS} readers)
file(READ ${FUZZER} fuzzer)
set(missing "")
foreach(name ${readers})
  if(NOT fuzzer MATCHES "[^a-z0-9_]${name}[^a-z0-9_]")
    list(APPEND missing ${name})
  endif()
endforeach()
list(LENGTH readers n)
if(missing)
  message(FATAL_ERROR "exports that decode an answer but that ${FUZZER} never calls: ${missing}")
endif()
message(STATUS "the response fuzzer calls all ${n} exports that decode an answer")
