# What the library stands on. cmake/tarnkitConfig.cmake.in asks for the same list.
find_package(fmt 9 REQUIRED)
find_package(ICU REQUIRED COMPONENTS uc i18n)
find_package(EXPAT REQUIRED)
find_package(PkgConfig REQUIRED)
pkg_check_modules(MD REQUIRED IMPORTED_TARGET libmd)
find_package(ZLIB REQUIRED)
find_package(PNG REQUIRED)
find_package(TIFF REQUIRED)
find_package(JPEG REQUIRED)
set(TARNKIT_DEPENDENCIES fmt::fmt ICU::uc ICU::i18n EXPAT::EXPAT PkgConfig::MD ZLIB::ZLIB PNG::PNG
    TIFF::TIFF JPEG::JPEG ${CMAKE_DL_LIBS})
