# KESH_SANITIZE=address,undefined | thread instruments every target.
if(KESH_SANITIZE)
  add_compile_options(-fsanitize=${KESH_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${KESH_SANITIZE})
endif()
