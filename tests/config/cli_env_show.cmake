# kestrel-cli env show: the language follows the locale unless --language says
# otherwise, and control characters in a file never reach the terminal.
# Called with -DCLI=<kestrel-cli> -DWORK=<scratch folder>.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})

function(show out_var)
  execute_process(COMMAND ${CLI} env show ${ARGN} --data-dir ${WORK}
                  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "env show ${ARGN}: exit ${rc}\n${out}\n${err}")
  endif()
  set(${out_var} "${out}" PARENT_SCOPE)
endfunction()

function(expect_in text what)
  string(FIND "${text}" "${what}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "'${what}' missing from:\n${text}")
  endif()
endfunction()

file(WRITE ${WORK}/t.kef "[Trigger0]\nName=stop\nType=1\nEvent=1\nM2=2\n")
set(ENV{LC_ALL} "")
set(ENV{LC_MESSAGES} "")
set(ENV{LANG} de_DE.UTF-8)
show(german ${WORK}/t.kef)
expect_in("${german}" "Stoppe Aufzeichnung / Signalereignis")
expect_in("${german}" "Aufzeichnung stoppen bei Signal M2 Steigt")
show(english ${WORK}/t.kef --language en)
expect_in("${english}" "Stop recording / Signal event")
expect_in("${english}" "condition: stop recording on signal M2 Rise")
file(WRITE ${WORK}/words.kef "[Trigger0]\nName=dial\nType=0\nEvent=0\nD1=1\nData=415444\n[Trigger1]\nName=quiet\nType=2\nEvent=4\nInActivityTime=30\nEventD2=1\nEventPE=1\n")
show(words ${WORK}/words.kef --language en)
expect_in("${words}" "condition: start recording on data 41 54 44 on D1 (Tx)")
expect_in("${words}" "condition: inactivity: 30 s without D2, PE")

# ESC [ 2 J and the one-character CSI (U+009B) would clear the screen.
string(ASCII 27 esc)
string(ASCII 194 155 csi)
file(WRITE ${WORK}/esc.kef "[General]\nTitle=a${esc}[2Jb${csi}2Jc ä\n")
show(out ${WORK}/esc.kef)
expect_in("${out}" "a?[2Jb?2Jc ä")

# Values the port cannot take are shown as they stand, not as a setting they are not.
file(WRITE ${WORK}/odd.kef "[ComA]\nParity=7\nStopBits=3\nDataBits=9\n")
show(out ${WORK}/odd.kef)
expect_in("${out}" "9 data bits, parity ordinal 7 (unknown), StopBits=3 (unknown)")
