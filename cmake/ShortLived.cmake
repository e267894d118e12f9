# vorselkelp_short_lived(TARGET...): links programs that live for milliseconds, as extensions do, so that what they
# run need not be found, mapped and relocated first: the C++ runtime and SQLite become part of them. Not for a program
# that links a toolkit, which brings its own of both. Call it behind target_link_libraries.
function(vorselkelp_short_lived)
  foreach(target IN LISTS ARGN)
    target_link_options(${target} PRIVATE -static-libstdc++ -static-libgcc LINKER:--as-needed)
    if(VORSELKELP_STATIC_SQLITE)
      # Asked for by name: libraries of ours that use it may stand behind it, and would get the shared one.
      target_link_options(${target} PRIVATE LINKER:--undefined=sqlite3_libversion)
      target_link_libraries(${target} PRIVATE ${VORSELKELP_STATIC_SQLITE} m)
    endif()
  endforeach()
endfunction()
find_library(VORSELKELP_STATIC_SQLITE libsqlite3.a)
mark_as_advanced(VORSELKELP_STATIC_SQLITE)
