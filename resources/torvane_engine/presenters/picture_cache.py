"""Pictures of slides, kept by document, page and width."""
from __future__ import annotations

import collections
import threading
import zlib
from typing import Any, NamedTuple, Optional, Tuple

MAX_CACHE = 64 * 1024 * 1024  # bytes of all pictures

Key = Tuple[str, int, int]    # document, page, width


class Picture(NamedTuple):
    revision: Any  # of the document when it was made
    data: bytes
    content_type: str
    tag: str       # the same for the same bytes, in the form of an entity tag

    @classmethod
    def of(cls, revision: Any, data: bytes) -> Picture:
        content_type = "image/jpeg" if data.startswith(b"\xff\xd8\xff") else "image/png"
        return cls(revision, data, content_type, f'"{zlib.crc32(data):08x}-{len(data):x}"')


class PictureCache:
    """The pictures used last, up to MAX_CACHE bytes. For any thread."""

    def __init__(self) -> None:
        self._pictures: collections.OrderedDict[Key, Picture] = collections.OrderedDict()
        self._bytes = 0
        self._lock = threading.Lock()

    def get(self, key: Key) -> Optional[Picture]:
        with self._lock:
            if key in self._pictures:
                self._pictures.move_to_end(key)
            return self._pictures.get(key)

    def revision(self, key: Key) -> Any:
        """Of the kept picture, None without one. Does not count as a use."""
        with self._lock:
            picture = self._pictures.get(key)
            return picture.revision if picture else None

    def put(self, key: Key, picture: Picture) -> None:
        with self._lock:
            old = self._pictures.pop(key, None)
            self._bytes += len(picture.data) - (len(old.data) if old else 0)
            self._pictures[key] = picture
            while self._bytes > MAX_CACHE and len(self._pictures) > 1:
                self._bytes -= len(self._pictures.popitem(last=False)[1].data)
