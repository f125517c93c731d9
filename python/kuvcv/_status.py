"""Statuses as exceptions and warnings."""
import warnings

from . import _contract


class _Told:
    """What a status is about: `status`, its `name` in the header and its `text` there, and the `function` that returned it."""

    def __init__(self, function, status):
        self.function, self.status = function, status
        self.name, self.text = _contract.STATUSES.get(status, ("unknown", "a status that this version does not know"))
        super().__init__(f"{function}: {self.text} ({self.name}, {status})")

    def __reduce__(self):
        return type(self), (self.function, self.status)


class Error(_Told, Exception):
    """A function refused its arguments; no output was written."""


class StatusWarning(_Told, UserWarning):
    """A function did its work and has something to tell about it."""


def check(function, status, stacklevel=3):
    """Raises an Error for a negative status, warns of a positive one."""
    if status < 0:
        raise Error(function, status)
    if status > 0:
        warnings.warn(StatusWarning(function, status), stacklevel=stacklevel)
