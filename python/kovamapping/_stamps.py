"""Stamp computation from a dict of attribute values.

The dict becomes the attribute file's JSON form (the one ``kova-mapping stamp`` reads), which the
library's side reads with the tool's own code: the same rules give the same stamps.
"""

from __future__ import annotations

import datetime as _datetime
import json
import math
from typing import Any, Mapping

from . import _kovamapping

_INT32_MIN = -(2**31)
_INT32_MAX = 2**31 - 1
_KINDS = (bool, int, float, str, _datetime.datetime)
_EPOCH = _datetime.datetime(1970, 1, 1, tzinfo=_datetime.timezone.utc)


def _kind(value: Any) -> type | None:
    for kind in _KINDS:
        if isinstance(value, kind):
            return kind
    return None


def _scalar(value: Any, where: str) -> Any:
    if isinstance(value, bool):
        return value
    if isinstance(value, int):
        if not _INT32_MIN <= value <= _INT32_MAX:
            raise ValueError(f"{where}: integer {value} does not fit 32 bits")
        return value
    if isinstance(value, float):
        if not math.isfinite(value):
            raise ValueError(f"{where}: {value!r} is not a finite number")
        return value
    if isinstance(value, str):
        value.encode("utf-8")  # a lone surrogate has no UTF-8 form: UnicodeEncodeError
        return value
    if isinstance(value, _datetime.datetime):
        moment = value if value.utcoffset() is not None else value.replace(tzinfo=_datetime.timezone.utc)
        # Whole seconds, rounded down, counted exactly: timestamp() is a float, which rounds
        # 23:59:59.999999 up to the next second in far years.
        return {"time": (moment - _EPOCH) // _datetime.timedelta(seconds=1)}
    raise TypeError(
        f"{where}: {type(value).__name__} is not an attribute value "
        "(str, int, float, bool, datetime.datetime, None or a list of one kind)"
    )


def _value(value: Any, where: str) -> Any:
    if value is None:
        return None
    if isinstance(value, (list, tuple)):
        kinds = set()
        elements = []
        for index, element in enumerate(value, start=1):
            place = f"{where} element {index}"
            if isinstance(element, (list, tuple)):
                raise TypeError(f"{place}: nested lists are not attribute values")
            if element is None:
                raise TypeError(f"{place}: a list holds values, not None")
            elements.append(_scalar(element, place))
            kinds.add(_kind(element))
        if len(kinds) > 1:
            names = ", ".join(sorted(kind.__name__ for kind in kinds))
            raise TypeError(f"{where}: a list holds values of one kind, not {names}")
        return elements
    return _scalar(value, where)


def attributes_json(attributes: Mapping[str, Any]) -> str:
    """The attribute file's JSON text of a dict of attribute values."""
    if not isinstance(attributes, Mapping):
        raise TypeError(f"attributes must be a dict of name to value, not {type(attributes).__name__}")
    document = {}
    for name, value in attributes.items():
        if not isinstance(name, str):
            raise TypeError(f"attribute names are str, not {type(name).__name__}")
        name.encode("utf-8")
        document[name] = _value(value, f"attribute {name!r}")
    return json.dumps(document, ensure_ascii=False, allow_nan=False)


def compute_stamp(attributes: Mapping[str, Any], text: bool = False) -> str:
    """The synchro stamp of attribute values, as ``kova-mapping stamp`` computes it.

    attributes maps each name to its value: str, int (32-bit), float (finite), bool,
    datetime.datetime (an aware one by its timestamp, a naive one taken as UTC; whole seconds),
    None for an unset value, or a list of values of one kind. The stamp is the base64 of the
    digest of the attributes' canonical text; with text=True that text is returned instead.

    Raises Error when stamp computation is disabled (DONOTUSE_ENABLEKSSGEN was not set when the
    library was loaded) or refused, ValueError or TypeError for values that have no attribute form.
    """
    return _kovamapping._compute_stamp(attributes_json(attributes), bool(text))
