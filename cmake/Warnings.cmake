# orvdiff_warnings(<target>): the warnings that this project is kept free of.
function(orvdiff_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    $<$<BOOL:${ORVDIFF_WERROR}>:-Werror>)
endfunction()
