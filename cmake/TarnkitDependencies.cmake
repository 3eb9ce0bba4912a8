# What the library stands on. cmake/tarnkitConfig.cmake.in asks for the same list.
find_package(fmt 9 REQUIRED)
find_package(ICU REQUIRED COMPONENTS uc i18n)
find_package(EXPAT REQUIRED)
find_package(OpenSSL REQUIRED COMPONENTS Crypto)
find_package(PNG REQUIRED)
find_package(TIFF REQUIRED)
find_package(JPEG REQUIRED)
