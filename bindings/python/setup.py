"""Packs the package that the build has made, in whose folder this file stands: nothing is compiled
here, but the wheel is of one system and one Python."""

import setuptools


class BuiltDistribution(setuptools.Distribution):
    def has_ext_modules(self):
        return True


setuptools.setup(
    packages=["tarnkit"],
    package_data={"tarnkit": ["*.so", "*.pyi", "py.typed"]},
    distclass=BuiltDistribution,
)
