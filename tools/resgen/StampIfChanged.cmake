# Writes the SHA-256 of FILE into STAMP, touching STAMP only when the hash changes, so that
# steps depending on STAMP rerun only when FILE's content (not merely its date) changes.
file(SHA256 "${FILE}" hash)
set(old "")
if(EXISTS "${STAMP}")
  file(READ "${STAMP}" old)
endif()
if(NOT old STREQUAL hash)
  file(WRITE "${STAMP}" "${hash}")
endif()
