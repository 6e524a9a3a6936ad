# Instruments everything that is built from here on with the sanitizers of ORVDIFF_SANITIZE.
if(ORVDIFF_SANITIZE)
  add_compile_options(-fsanitize=${ORVDIFF_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all
                      # Needs descriptors to look at an object; tests run out of them on purpose.
                      -fno-sanitize=vptr)
  add_link_options(-fsanitize=${ORVDIFF_SANITIZE})
endif()
