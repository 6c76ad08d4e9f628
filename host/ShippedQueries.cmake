# The query texts that grammars bring with them in their npm packages. A language without a pack is coloured by these, so
# the host keeps a table of them: velmar_shipped(LANGUAGE CATEGORY FILE…), inherited texts first. Files that the installed
# version of a package lacks are left out.

set(shippedFolder "${CMAKE_SOURCE_DIR}/grammars/node_modules")
set(shippedRows "")
set(shippedFiles "")
function(velmar_shipped language category)
  foreach(file IN LISTS ARGN)
    if(EXISTS "${shippedFolder}/${file}")
      string(APPEND shippedRows "{\"${language}\", \"${category}\", \"${file}\"},\n")
      list(APPEND shippedFiles "${file}")
    endif()
  endforeach()
  list(REMOVE_DUPLICATES shippedFiles)
  set(shippedRows "${shippedRows}" PARENT_SCOPE)
  set(shippedFiles "${shippedFiles}" PARENT_SCOPE)
endfunction()

# velmar_shipped_in(LANGUAGE FOLDER): what a package has under the usual names.
macro(velmar_shipped_in language folder)
  velmar_shipped(${language} highlights "${folder}/queries/highlights.scm")
  velmar_shipped(${language} injections "${folder}/queries/injections.scm")
endmacro()

foreach(name IN ITEMS c css html javascript jsdoc json make perl pod python regex ruby rust scss swift)
  velmar_shipped_in(${name} tree-sitter-${name})
endforeach()
velmar_shipped_in(csharp tree-sitter-c-sharp)
velmar_shipped_in(shell tree-sitter-bash)
velmar_shipped_in(tsq tree-sitter-query)
velmar_shipped_in(sql @derekstride/tree-sitter-sql)
velmar_shipped_in(jinja tree-sitter-jinja2)
foreach(name IN ITEMS lua toml yaml)
  velmar_shipped_in(${name} @tree-sitter-grammars/tree-sitter-${name})
endforeach()
velmar_shipped_in(markdown @tree-sitter-grammars/tree-sitter-markdown/tree-sitter-markdown)
velmar_shipped_in(markdown_inline @tree-sitter-grammars/tree-sitter-markdown/tree-sitter-markdown-inline)
velmar_shipped(xml highlights @tree-sitter-grammars/tree-sitter-xml/queries/xml/highlights.scm)

# Languages that start from another one's text.
velmar_shipped(cpp highlights tree-sitter-c/queries/highlights.scm)
velmar_shipped_in(cpp tree-sitter-cpp)
velmar_shipped(javascript highlights tree-sitter-javascript/queries/highlights-jsx.scm)
foreach(name IN ITEMS typescript tsx)
  velmar_shipped(${name} highlights tree-sitter-javascript/queries/highlights.scm)
  velmar_shipped(${name} injections tree-sitter-javascript/queries/injections.scm)
  velmar_shipped_in(${name} tree-sitter-typescript)
endforeach()
velmar_shipped(tsx highlights tree-sitter-javascript/queries/highlights-jsx.scm)

# Text with code in it: what surrounds the code is another language.
velmar_shipped_in(php tree-sitter-php)
velmar_shipped(php injections tree-sitter-php/queries/injections-text.scm)
velmar_shipped_in(php_embedded tree-sitter-php)
foreach(name IN ITEMS ejs erb)
  velmar_shipped(html+${name} highlights tree-sitter-embedded-template/queries/highlights.scm)
  velmar_shipped(html+${name} injections tree-sitter-embedded-template/queries/injections-${name}.scm)
endforeach()

file(GENERATE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/ShippedQueries.inc" CONTENT "${shippedRows}")
