# What a build is made with, and the file beside the desktop program that tells it
# (src/platform/bundle_info.h). Whoever builds for users sets these, as in
# `cmake --preset release -DBRIMWATCH_CLOUD_API_TOKEN=...`. Without a token nothing is sent to phones;
# without a feed and a key there are no updates.

set(BRIMWATCH_BUNDLE_IDENTIFIER "net.quillmoor.brimwatch.mac" CACHE STRING
  "Identifier of the program among the programs of its makers")
set(BRIMWATCH_BUILD_NUMBER "1" CACHE STRING
  "Number of the build, by which updates tell what is newer")
set(BRIMWATCH_SHORT_VERSION "${PROJECT_VERSION}" CACHE STRING "Version for people")
set(BRIMWATCH_KEYCHAIN_ACCESS_GROUP "net.quillmoor.brimwatch.shared" CACHE STRING
  "Group of programs that share the keys; never empty")
set(BRIMWATCH_CLOUD_CONTAINER "iCloud.net.quillmoor.brimwatch" CACHE STRING
  "Container of the records for phones; never empty")
set(BRIMWATCH_CLOUD_ENVIRONMENT "production" CACHE STRING "development or production")
set(BRIMWATCH_CLOUD_API_TOKEN "" CACHE STRING "API token of that container and environment")
set(BRIMWATCH_CLOUD_SERVICE "" CACHE STRING
  "Address of the service with that container; empty: its provider's")
set(BRIMWATCH_CLOUD_SIGN_IN_REDIRECT "http://127.0.0.1:28417/signed-in" CACHE STRING
  "Where the browser returns to, as stored with the API token")
set(BRIMWATCH_PRIVATE_UPDATES_KEYCHAIN_GROUP "" CACHE STRING
  "Team identifier, a dot and the bundle identifier; empty: no updates at all")
set(BRIMWATCH_UPDATE_HOST "" CACHE STRING "Host of the updates")
set(BRIMWATCH_PUBLIC_UPDATE_FEED "" CACHE STRING "Address of the public feed of updates")
set(BRIMWATCH_PUBLIC_UPDATE_SIGNING_KEY "" CACHE STRING
  "Public Ed25519 key of the updates, in base64")

# brimwatch_bundle_info(FILE): writes the file.
function(brimwatch_bundle_info file)
  if(NOT BRIMWATCH_KEYCHAIN_ACCESS_GROUP OR NOT BRIMWATCH_CLOUD_CONTAINER)
    message(FATAL_ERROR "No build can do without an access group of its keys and a container")
  endif()
  set(document "{}")
  foreach(member IN ITEMS
      CFBundleIdentifier=BUNDLE_IDENTIFIER
      CFBundleVersion=BUILD_NUMBER
      CFBundleShortVersionString=SHORT_VERSION
      QMKeychainAccessGroup=KEYCHAIN_ACCESS_GROUP
      QMICloudContainer=CLOUD_CONTAINER
      QMICloudEnvironment=CLOUD_ENVIRONMENT
      QMICloudApiToken=CLOUD_API_TOKEN
      QMICloudService=CLOUD_SERVICE
      QMICloudSignInRedirect=CLOUD_SIGN_IN_REDIRECT
      QMPrivateUpdatesKeychainGroup=PRIVATE_UPDATES_KEYCHAIN_GROUP
      QMUpdateHost=UPDATE_HOST
      SUFeedURL=PUBLIC_UPDATE_FEED
      SUPublicEDKey=PUBLIC_UPDATE_SIGNING_KEY)
    string(REPLACE "=" ";" member ${member})
    list(GET member 0 key)
    list(GET member 1 variable)
    string(REGEX REPLACE "([\"\\\\])" "\\\\\\1" value "${BRIMWATCH_${variable}}")
    string(JSON document SET "${document}" ${key} "\"${value}\"")
  endforeach()
  file(WRITE ${file} "${document}\n")
endfunction()
