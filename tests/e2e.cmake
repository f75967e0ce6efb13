# The real program on private displays. The tests find free display numbers themselves, so that they
# may run beside anything; PROCESSORS keeps them from slowing one another down.
function(quillox_e2e name mark)
  add_test(NAME e2e.${name}.${mark}
    COMMAND ${CMAKE_COMMAND} -E env
      QUILLOX_BINARY=$<TARGET_FILE:quillox>
      QUILLOX_SANITIZED=$<BOOL:${QUILLOX_SANITIZE}>
      QUILLOX_E2E_ARTIFACTS=${PROJECT_BINARY_DIR}/e2e-failures
      PYTHONDONTWRITEBYTECODE=1
      /usr/bin/python3 -m pytest -p no:cacheprovider -v -s -rs -m ${mark}
      ${CMAKE_CURRENT_SOURCE_DIR}/e2e/test_${name}.py)
  # 77: something that a test needs is missing on this machine; the output names it.
  set_tests_properties(e2e.${name}.${mark} PROPERTIES
    LABELS e2e-${mark} TIMEOUT 300 PROCESSORS 2 SKIP_RETURN_CODE 77
    SKIP_REGULAR_EXPRESSION "No module named '?(pytest|PIL|Xlib)")
endfunction()

quillox_e2e(seal x11)
quillox_e2e(seal wayland)
quillox_e2e(screens x11)
quillox_e2e(screens wayland)
quillox_e2e(launch x11)
quillox_e2e(settings x11)
quillox_e2e(local_site x11)
quillox_e2e(endurance x11)
