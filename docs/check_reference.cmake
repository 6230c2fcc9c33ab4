# Run after Doxygen by the `docs` target (-DHTML=<html directory> -DHEADER=<kvnsdk2.h>
# -DNAMES=<the description's export names, one per line>):
# every exported function must be documented in the reference, on the page of its family's
# group (group__*.html), and nothing the header documents may be left outside the groups.
# Doxygen only warns about undocumented members of a documented file, so this also
# catches a lost @file comment.
set(file_page ${HTML}/kvnsdk2_8h.html)
if(NOT EXISTS ${file_page})
  message(FATAL_ERROR "no reference page for ${HEADER}: its @file comment is missing")
endif()

# The export names, from the header's description (kvnsdk2_exports.txt).
file(STRINGS ${NAMES} EXPORTS)

# The group pages, one string. A documented function has a title there: "</span>name()</h2>".
file(GLOB group_pages ${HTML}/group__*.html)
if(NOT group_pages)
  message(FATAL_ERROR "no group pages in ${HTML}: the header's @defgroup comments are missing")
endif()
set(groups "")
foreach(p ${group_pages})
  file(READ ${p} text)
  string(APPEND groups "${text}")
endforeach()
file(READ ${file_page} page)

set(missing "")
set(ungrouped "")
list(LENGTH EXPORTS n)
foreach(name ${EXPORTS})
  string(FIND "${groups}" "</span>${name}()</h2>" at)
  if(at EQUAL -1)
    string(FIND "${page}" ">${name}</a>" at)
    if(at EQUAL -1)
      list(APPEND missing ${name})
    else()
      list(APPEND ungrouped ${name})
    endif()
  endif()
endforeach()
if(missing)
  message(FATAL_ERROR "exports missing from the API reference: ${missing}")
endif()
if(ungrouped)
  message(FATAL_ERROR "exports outside every group (add them to their family's @addtogroup block): ${ungrouped}")
endif()

# Everything else the file page lists (records, macros, typedefs, enums) must be listed by
# a group page too: the file page lists all of the header, a group page its own members.
set(item_regex "class=\"memItemRight\" valign=\"bottom\">(<a [^>]*>|<b>)([A-Za-z_][A-Za-z0-9_]*)")
string(REGEX MATCHALL "${item_regex}" file_items "${page}")
string(REGEX REPLACE "${item_regex}" "\\2" file_items "${file_items}")
string(REGEX MATCHALL "${item_regex}" group_items "${groups}")
string(REGEX REPLACE "${item_regex}" "\\2" group_items "${group_items}")
list(REMOVE_DUPLICATES file_items)
set(outside ${file_items})
list(REMOVE_ITEM outside ${group_items})
if(outside)
  message(FATAL_ERROR "documented outside every group (add them to their family's @addtogroup block): ${outside}")
endif()
list(LENGTH file_items m)
message(STATUS "API reference documents all ${n} exports; all ${m} names of the header are in their family's group")
