# Runs the SQL texts named by SOURCES (a list with commas) into OUTPUT, through a file beside it, so that a text that
# fails leaves no half catalogue.
string(REPLACE "," ";" sources "${SOURCES}")
set(script "PRAGMA foreign_keys = ON;\nBEGIN;\n")
foreach(source IN LISTS sources)
  file(READ ${source} text)
  string(APPEND script "${text}")
endforeach()
string(APPEND script "COMMIT;\n")
file(WRITE ${OUTPUT}.sql "${script}")
file(REMOVE ${OUTPUT}.part)
execute_process(COMMAND ${SQLITE3} -bail -batch ${OUTPUT}.part INPUT_FILE ${OUTPUT}.sql
  RESULT_VARIABLE status ERROR_VARIABLE complaint)
file(REMOVE ${OUTPUT}.sql)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "The catalogue was not built: ${complaint}")
endif()
file(RENAME ${OUTPUT}.part ${OUTPUT})
