# kestrel-cli record --env on the simulated line: the environment gives the record
# file and the line settings, and options on the command line win over it.
# Called with -DCLI=<kestrel-cli> -DWORK=<scratch folder>.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
set(ENV{KESTREL_DATA_DIR} ${WORK}/data)
set(ENV{LANG} C)

function(expect_exit code)
  execute_process(COMMAND ${CLI} record ${ARGN} RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL code)
    message(FATAL_ERROR "record ${ARGN}: exit ${rc}, expected ${code}\n${out}\n${err}")
  endif()
  set(last_err "${err}" PARENT_SCOPE)
endfunction()

file(WRITE ${WORK}/line.kef "[ComA]\nCustomBaudRate=19200\n[Files]\nRecord data=${WORK}/from-env.ksr\n")
expect_exit(0 --env ${WORK}/line.kef --simulate --duration 0.3 --replace)
if(NOT EXISTS ${WORK}/from-env.ksr)
  message(FATAL_ERROR "the environment's record file was not written")
endif()

expect_exit(0 --env ${WORK}/line.kef -o ${WORK}/explicit.ksr --simulate --duration 0.3 --replace)
if(NOT EXISTS ${WORK}/explicit.ksr)
  message(FATAL_ERROR "-o did not win over the environment's record file")
endif()

# A bare record file name goes to recordings/ of the data folder.
file(WRITE ${WORK}/bare.kef "[Files]\nRecord data=bare.ksr\n")
expect_exit(0 --env ${WORK}/bare.kef --simulate --duration 0.3 --replace)
if(NOT EXISTS ${WORK}/data/recordings/bare.ksr)
  message(FATAL_ERROR "a bare record file name did not land in recordings/")
endif()

# An unusable baud rate in the environment is refused unless --baud replaces it.
file(WRITE ${WORK}/slow.kef "[ComA]\nCustomBaudRate=10\n[Files]\nRecord data=${WORK}/slow.ksr\n")
expect_exit(2 --env ${WORK}/slow.kef --simulate --duration 0.3 --replace)
if(NOT last_err MATCHES "baud rate 10")
  message(FATAL_ERROR "no word about the environment's baud rate: ${last_err}")
endif()
expect_exit(0 --env ${WORK}/slow.kef --baud 9600 --simulate --duration 0.3 --replace)

expect_exit(3 --env ${WORK}/missing.kef --simulate --duration 0.3)

# An environment saved on the simulated line names sim:A and sim:B: it records that line
# again and says so; a real port named for one side only leaves the other side unusable.
file(WRITE ${WORK}/sim.kef "[ComA]\nDevice=1\nDevicePath=sim:A\n[ComB]\nDevice=2\nDevicePath=sim:B\n[Files]\nRecord data=${WORK}/sim.ksr\n")
expect_exit(0 --env ${WORK}/sim.kef --duration 0.3 --replace)
if(NOT EXISTS ${WORK}/sim.ksr OR NOT last_err MATCHES "simulated line")
  message(FATAL_ERROR "the simulated line was not recorded, or not said so: ${last_err}")
endif()
file(SIZE ${WORK}/sim.ksr sim_size)
if(sim_size LESS 800)
  message(FATAL_ERROR "the simulated line left only ${sim_size} bytes")
endif()
expect_exit(2 --env ${WORK}/sim.kef --port-a /dev/null --duration 0.3 --replace)
if(NOT last_err MATCHES "port B on the simulated line")
  message(FATAL_ERROR "no word about port B: ${last_err}")
endif()
