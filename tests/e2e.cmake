# The real program on private displays: as it is shipped, where its build is given, and some of it again with
# the sanitizers. The tests find free display numbers themselves, so that they may run beside anything. A test counts
# as two of the four places that a machine with two processors has; one of those that hardly do anything but WAIT
# counts as one, and ALONE marks those that use both processors, or that measure.
set(QUILLOX_SHIPPED_PROGRAM "$<TARGET_FILE:quillox>" CACHE STRING "The program that the end-to-end tests drive")

function(quillox_e2e name mark)
  cmake_parse_arguments(PARSE_ARGV 2 E2E "SANITIZED;ALONE;WAITS" "" "")
  if(E2E_SANITIZED)
    set(test e2e.${name}.${mark}.sanitized)
    set(program $<TARGET_FILE:quillox>)
  else()
    set(test e2e.${name}.${mark})
    set(program ${QUILLOX_SHIPPED_PROGRAM})
  endif()
  add_test(NAME ${test}
    COMMAND ${CMAKE_COMMAND} -E env
      QUILLOX_BINARY=${program}
      QUILLOX_SANITIZED=$<BOOL:${E2E_SANITIZED}>
      QUILLOX_E2E_ARTIFACTS=${PROJECT_BINARY_DIR}/e2e-failures
      PYTHONDONTWRITEBYTECODE=1
      /usr/bin/python3 -m pytest -p no:cacheprovider -v -s -rs -m ${mark}
      ${CMAKE_CURRENT_SOURCE_DIR}/e2e/test_${name}.py)
  if(E2E_ALONE OR E2E_SANITIZED)
    set(processors 4)
  elseif(E2E_WAITS)
    set(processors 1)
  else()
    set(processors 2)
  endif()
  # 77: something that a test needs is missing on this machine; the output names it.
  set_tests_properties(${test} PROPERTIES
    LABELS e2e-${mark} TIMEOUT 300 PROCESSORS ${processors} SKIP_RETURN_CODE 77
    SKIP_REGULAR_EXPRESSION "No module named '?(pytest|PIL|Xlib)")
endfunction()

quillox_e2e(seal x11)
quillox_e2e(seal wayland)
quillox_e2e(screens x11)
quillox_e2e(screens wayland)
quillox_e2e(guide x11)
quillox_e2e(guide wayland)
quillox_e2e(launch x11)
quillox_e2e(lock x11)
quillox_e2e(lock wayland)
quillox_e2e(engine x11)
quillox_e2e(gesture x11)
quillox_e2e(gesture wayland)
quillox_e2e(typing x11)
quillox_e2e(typing wayland)
quillox_e2e(prompt x11)
quillox_e2e(prompt wayland)
quillox_e2e(mashing x11 ALONE)
quillox_e2e(adversaries x11 ALONE)
quillox_e2e(setup x11)
quillox_e2e(setup wayland)
quillox_e2e(local_site x11)
quillox_e2e(media x11)
quillox_e2e(addresses x11)
quillox_e2e(page_process x11 WAITS)
quillox_e2e(usage x11 WAITS)
quillox_e2e(idle_reset x11 WAITS)
quillox_e2e(hostile x11)
quillox_e2e(hostile wayland)
quillox_e2e(touch x11)
quillox_e2e(navbar x11)
quillox_e2e(connectivity x11)
quillox_e2e(patience x11 WAITS)
quillox_e2e(open_panel x11)
quillox_e2e(endurance x11 ALONE)
quillox_e2e(doctor x11)
quillox_e2e(doctor wayland)
quillox_e2e(comes_back x11 WAITS)
quillox_e2e(update x11)
quillox_e2e(session x11 WAITS)
quillox_e2e(session wayland WAITS)
if(QUILLOX_SANITIZE)
  quillox_e2e(screens x11 SANITIZED)
  quillox_e2e(local_site x11 SANITIZED)
  quillox_e2e(endurance x11 SANITIZED)
  quillox_e2e(mashing x11 SANITIZED)
endif()
