# Values that belong to an account with a service and are compiled in. The defaults are those of the embedded
# service; a build for another account sets them on the command line.

set(ZQ_TARN7_SERVER "www.tarn7.example" CACHE STRING "Host name of the Tarn7 service")
set(ZQ_TARN7_API_KEY "463100_000000001" CACHE STRING "Tarn7ApiKey: six digits, an underscore, nine digits")
set(ZQ_TARN7_HASH_SALT "0f1e2d3c4b5a69788796a5b4c3d2e1" CACHE STRING "Tarn7HashSalt: 30 hexadecimal digits")
set(ZQ_TARN7_HASH_PEPPER "tarnpeak" CACHE STRING "Tarn7HashPepper: 8 lower-case letters")
set(ZQ_TARN7_HOME_URL "http://www.tarn7.example/" CACHE STRING "Home page of Tarn7")
set(ZQ_TARN7_LOGIN_URL "https://www.tarn7.example/login" CACHE STRING "Sign-in page of Tarn7")
set(ZQ_TARN7_TERMS_URL "https://www.tarn7.example/legal/terms" CACHE STRING "Terms page of Tarn7")
set(ZQ_FRAMEQUARRY_SERVER "api.framequarry.example" CACHE STRING "Host name of the FrameQuarry service's interface")
set(ZQ_FRAMEQUARRY_HOME_URL "http://www.framequarry.example/" CACHE STRING "Home page of FrameQuarry")
set(ZQ_FRAMEQUARRY_TERMS_URL "https://www.framequarry.example/terms-of-service" CACHE STRING
    "Terms page of FrameQuarry")
set(ZQ_FRAMEQUARRY_PUBLIC_KEY "test_qD7mXv2KzR9tLw4NcY8bHs5JpG3fVe6UaT1kZoE7iQxW0rMyB2nSdCgPuAj" CACHE STRING
    "FrameQuarryPublicKey: five characters of a prefix, 59 letters and digits")
set(ZQ_FRAMEQUARRY_PRIVATE_KEY "test_Wn5RbT8yKc3HvZ6eJq1MxUa9LgD4sPoF7tCiE2kYwN0zXrB5hVmSuQdGjAf" CACHE STRING
    "FrameQuarryPrivateKey: five characters of a prefix, 59 letters and digits")

if(NOT ZQ_TARN7_API_KEY MATCHES "^[0-9][0-9][0-9][0-9][0-9][0-9]_[0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9]$")
  message(FATAL_ERROR "ZQ_TARN7_API_KEY must be six digits, an underscore and nine digits")
endif()
string(LENGTH "${ZQ_TARN7_HASH_SALT}" salt_length)
if(NOT salt_length EQUAL 30 OR NOT ZQ_TARN7_HASH_SALT MATCHES "^[0-9a-f]+$")
  message(FATAL_ERROR "ZQ_TARN7_HASH_SALT must be 30 lower-case hexadecimal digits")
endif()
string(LENGTH "${ZQ_TARN7_HASH_PEPPER}" pepper_length)
if(NOT pepper_length EQUAL 8 OR NOT ZQ_TARN7_HASH_PEPPER MATCHES "^[a-z]+$")
  message(FATAL_ERROR "ZQ_TARN7_HASH_PEPPER must be 8 lower-case letters")
endif()
foreach(key ZQ_FRAMEQUARRY_PUBLIC_KEY ZQ_FRAMEQUARRY_PRIVATE_KEY)
  string(LENGTH "${${key}}" key_length)
  if(NOT key_length EQUAL 64 OR NOT ${key} MATCHES "^.....[0-9A-Za-z]+$")
    message(FATAL_ERROR "${key} must be a prefix of five characters and 59 letters and digits")
  endif()
endforeach()

configure_file("${CMAKE_CURRENT_LIST_DIR}/ServiceValues.h.in"
               "${CMAKE_BINARY_DIR}/generated/ServiceValues.h" @ONLY)
add_library(zq_service_values INTERFACE)
target_include_directories(zq_service_values INTERFACE "${CMAKE_BINARY_DIR}/generated")
