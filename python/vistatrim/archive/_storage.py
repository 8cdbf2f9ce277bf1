"""The output folder, on any storage that fsspec supports."""
from __future__ import annotations

import json
import os
import uuid
from typing import Any, Dict, List, Mapping, Optional

import fsspec
from fsspec.implementations.local import LocalFileSystem

UNFINISHED = ".tmp"


class Store:
    """Files of one folder. A file appears under its name only when it is whole."""

    def __init__(self, url: str, storage_options: Optional[Mapping[str, Any]] = None) -> None:
        self._files, self._root = fsspec.core.url_to_fs(url, **dict(storage_options or {}))
        self._is_local = isinstance(self._files, LocalFileSystem)

    def create(self) -> None:
        self._files.makedirs(self._root, exist_ok=True)

    def names(self) -> List[str]:
        """The names in the folder; none if there is no folder."""
        self._files.invalidate_cache()
        try:
            entries = self._files.ls(self._root, detail=False)
        except FileNotFoundError:
            return []
        return [entry.rstrip("/").rsplit("/", 1)[-1] for entry in entries]

    def exists(self, name: str) -> bool:
        self._files.invalidate_cache()
        return bool(self._files.exists(self._path(name)))

    def read(self, name: str) -> bytes:
        return bytes(self._files.cat_file(self._path(name)))

    def read_json(self, name: str) -> Optional[Dict[str, Any]]:
        """None if there is no such file."""
        try:
            found = json.loads(self.read(name))
        except FileNotFoundError:
            return None
        return found if isinstance(found, dict) else None

    def write(self, name: str, content: bytes) -> None:
        """Writes to a temporary name, then renames. Object storage renames by copying, and the copy
        appears at once."""
        unfinished = self._path(f".{name}.{uuid.uuid4().hex}{UNFINISHED}")
        if self._is_local:
            with open(unfinished, "wb") as file:
                file.write(content)
                file.flush()
                os.fsync(file.fileno())
            os.replace(unfinished, self._path(name))
        else:
            self._files.pipe_file(unfinished, content)
            self._files.mv(unfinished, self._path(name))

    def write_json(self, name: str, content: Mapping[str, Any]) -> None:
        self.write(name, (json.dumps(content, indent=1) + "\n").encode())

    def remove(self, name: str) -> None:
        try:
            self._files.rm_file(self._path(name))
        except FileNotFoundError:
            pass

    def remove_hidden(self, *endings: str) -> None:
        """Removes hidden files with these endings, which workers that died may have left."""
        for name in self.names():
            if name.startswith(".") and name.endswith(endings):
                self.remove(name)

    def _path(self, name: str) -> str:
        return f"{self._root.rstrip('/')}/{name}"
