"""The libraries for Conan 2, from the sources around this folder."""

import os

from conan import ConanFile
from conan.tools.build import check_min_cppstd
from conan.tools.cmake import CMake, CMakeToolchain, cmake_layout
from conan.tools.files import copy


class ZtbaseclientConan(ConanFile):
    name = "ztbaseclient"
    version = "0.1.0"
    description = "Client-side base library of a scientific workflow server"
    # A static archive would drop the registrations of classes that nobody names.
    package_type = "shared-library"
    settings = "os", "arch", "compiler", "build_type"
    requires = "expat/[>=2.5]", "libcurl/[>=7.88]", "zlib/[>=1.2.13]"
    generators = "CMakeDeps"

    def export_sources(self):
        root = os.path.join(self.recipe_folder, "..", "..")
        for pattern in ("CMakeLists.txt", "CHANGELOG.md", "cmake/*", "examples/*", "tovinCore/*", "tovin/*", "ztcore/*",
                        "ztbaseclient/*", "ztservice/*"):
            copy(self, pattern, root, self.export_sources_folder)

    def validate(self):
        check_min_cppstd(self, 20)

    def layout(self):
        cmake_layout(self)

    def generate(self):
        toolchain = CMakeToolchain(self)
        toolchain.cache_variables["ZTB_BUILD_COMMAND"] = False
        toolchain.generate()

    def build(self):
        cmake = CMake(self)
        cmake.configure()
        cmake.build()

    def package(self):
        CMake(self).install()

    def package_info(self):
        self.cpp_info.set_property("cmake_find_mode", "none")
        self.cpp_info.builddirs = [os.path.join("lib", "cmake")]
        self.cpp_info.libs = ["ztservice", "ztbaseclient", "ztcore", "tovin", "tovinCore"]
