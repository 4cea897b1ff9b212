"""The wheel is one platform's, for its libraries, and any Python 3's, which calls them through ctypes. Which
platform, scripts/build-wheel.sh says."""

import os
from typing import Tuple

from setuptools import Distribution, setup
from wheel.bdist_wheel import bdist_wheel


class PlatformDistribution(Distribution):  # type: ignore[misc]
    def has_ext_modules(self) -> bool:
        return True


class PlatformWheel(bdist_wheel):  # type: ignore[misc]
    def get_tag(self) -> Tuple[str, str, str]:
        return "py3", "none", os.environ["QOROCV460_PLATFORM"]


setup(distclass=PlatformDistribution, cmdclass={"bdist_wheel": PlatformWheel})
