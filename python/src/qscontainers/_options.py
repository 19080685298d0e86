"""What holds for all calls that do not say otherwise."""
from __future__ import annotations

import sys
import warnings

from ._com import FOLDER
from .interfaces import tagLimitPolicyEnum


class OutOfRange(ValueError):
    """A temperature or a pressure is outside the range of the data."""


class OutOfRangeWarning(UserWarning):
    """A temperature or a pressure is outside the range of the data."""


class Options:
    """`outside`: what a temperature or a pressure outside the range of the data does: "allow" it, "warn" or "raise".
    `policy`: how a property goes on there; at first not at all: None for a number, NaN in an array."""

    def __init__(self) -> None:
        self.outside = "allow"
        self.policy = tagLimitPolicyEnum.eNotSetOutside

    @property
    def outside(self) -> str:
        return self._outside

    @outside.setter
    def outside(self, value: str) -> None:
        if value not in ("allow", "warn", "raise"):
            raise ValueError('outside is "allow", "warn" or "raise"')
        self._outside = value
        self.allows = value == "allow"

    def complain(self, text: str) -> None:
        if self._outside == "raise":
            raise OutOfRange(text)
        level, frame = 2, sys._getframe().f_back
        while frame and frame.f_code.co_filename.startswith(FOLDER):  # the warning is about the caller's line
            level, frame = level + 1, frame.f_back
        warnings.warn(text, OutOfRangeWarning, stacklevel=level)

    def __repr__(self) -> str:
        return f"outside={self._outside!r}, policy={self.policy!r}"


options = Options()
