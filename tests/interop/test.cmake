# Peers of the interop tests; a test whose peer is missing is left out.
find_package(ICU QUIET COMPONENTS uc)
if(ICU_FOUND)
  target_link_libraries(${program} PRIVATE ICU::uc)
  target_compile_definitions(${program} PRIVATE ZANTREL_HAVE_ICU)
endif()
