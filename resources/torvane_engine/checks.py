"""What may be in the bodies of requests."""
from __future__ import annotations

import json
from typing import Any, Callable, Dict

from .http_message import HttpError
from .ink import Event

MAX_COORDINATE = 10.0            # in slide widths or heights, either sign


def parse_integer(digits: str) -> int:
    if len(digits) > 20:  # more than 64 bits; a long one would take long to convert
        raise ValueError("number out of range")
    return int(digits)


def refuse_constant(name: str) -> None:
    raise ValueError(f"{name} is not JSON")


def parse_object(body: bytes) -> Dict[str, Any]:
    try:
        value = json.loads(body.decode("utf-8"), parse_int=parse_integer,
                           parse_constant=refuse_constant)
    except (ValueError, RecursionError):
        raise HttpError(400, "the body is not valid JSON") from None
    if not isinstance(value, dict):
        raise HttpError(400, "the body is not a JSON object")
    return value


def is_stroke_id(value: Any) -> bool:
    return type(value) is int and -2 ** 63 <= value < 2 ** 63  # a bool is not an id


def is_coordinate(value: Any) -> bool:
    return type(value) in (int, float) and -MAX_COORDINATE <= value <= MAX_COORDINATE


def is_id_list(value: Any) -> bool:
    return isinstance(value, list) and all(map(is_stroke_id, value))


POINT = {"x": is_coordinate, "y": is_coordinate}
EVENT_FIELDS: Dict[str, Dict[str, Callable[[Any], bool]]] = {
    "begin": {"id": is_stroke_id, **POINT}, "pt": {"id": is_stroke_id, **POINT},
    "del": {"ids": is_id_list}, "clear": {}, "laser": POINT, "laserend": {},
}


def check_event(event: Any, index: int) -> Event:
    """The event with its known fields only."""
    kind = event.get("t") if isinstance(event, dict) else None
    fields = EVENT_FIELDS.get(kind) if isinstance(kind, str) else None
    if fields is None:
        raise HttpError(400, f"event {index} has no known kind \"t\"")
    clean = {"t": kind}
    for name, is_valid in fields.items():
        if name not in event or not is_valid(event[name]):
            raise HttpError(400, f"event {index} ({kind}) has no valid \"{name}\"")
        clean[name] = event[name]
    return clean
