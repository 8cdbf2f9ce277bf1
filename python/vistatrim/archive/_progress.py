"""The progress of a run."""
from __future__ import annotations

import sys
import time
from dataclasses import dataclass
from typing import Callable, TextIO


@dataclass(frozen=True)
class Progress:
    done: int  # photographs of the archive that have a line
    total: int
    failed: int
    per_second: float  # in this run; 0 until the first partition is finished
    remaining_seconds: float  # 0 until the rate is known

    def __str__(self) -> str:
        text = f"{self.done:,} of {self.total:,} photographs"
        if self.failed:
            text += f", {self.failed:,} failed"
        if self.per_second > 0:
            text += f", {self.per_second:.1f}/s, {duration_text(self.remaining_seconds)} left"
        return text


Listener = Callable[[Progress], None]


def duration_text(seconds: float) -> str:
    """'45 s', '12 min', '3 h 20 min', '2 d 4 h'."""
    if seconds < 90:
        return f"{seconds:.0f} s"
    minutes = round(seconds / 60)
    if minutes < 90:
        return f"{minutes} min"
    hours, minutes = divmod(minutes, 60)
    if hours < 48:
        return f"{hours} h {minutes} min"
    return f"{hours // 24} d {hours % 24} h"


class Printer:
    """Writes the progress to a stream: on a terminal one line that is updated, else a line every half
    minute."""

    def __init__(self, stream: TextIO = sys.stderr) -> None:
        self._stream = stream
        self._is_terminal = stream.isatty()
        self._pause = 0.5 if self._is_terminal else 30.0
        self._last = time.monotonic() - self._pause

    def __call__(self, progress: Progress) -> None:
        if time.monotonic() - self._last < self._pause:
            return
        self._last = time.monotonic()
        self._stream.write(f"\r{progress}\033[K" if self._is_terminal else f"{progress}\n")
        self._stream.flush()

    def close(self) -> None:
        if self._is_terminal:
            self._stream.write("\r\033[K")
            self._stream.flush()
