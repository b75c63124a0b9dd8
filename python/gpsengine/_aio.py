"""A receiver's records in an event loop, which waits for the receiver's descriptor."""

from __future__ import annotations

import asyncio
import collections
import typing
from collections.abc import AsyncIterator

from . import _core

_TYPES = {
    _core.Kind.fixes: _core.Fix,
    _core.Kind.satellites: _core.Sky,
    _core.Kind.reports: _core.Report,
    _core.Kind.raw: _core.Raw,
}
_MOST = 4096


class _Reader:
    """Who waits for records of one kind."""

    def __init__(self, kind: _core.Kind) -> None:
        self._type = _TYPES.get(kind)
        self.records: collections.deque[object] = collections.deque(maxlen=_MOST)
        self.news = asyncio.Event()
        self.lost = 0

    def offer(self, record: object) -> None:
        if self._type is _core.Fix:
            if not isinstance(record, _core.Fix) or not record.valid or record.repeats:
                return
        elif self._type is not None and not isinstance(record, self._type):
            return
        self.lost += len(self.records) == _MOST
        self.records.append(record)
        self.news.set()


class Hub:
    """Takes a receiver's records out once for all who wait for some in one event loop."""

    def __init__(self, receiver: _core.Receiver) -> None:
        self._receiver = receiver
        self._readers: list[_Reader] = []
        self._loop: asyncio.AbstractEventLoop | None = None
        self._descriptor = -1
        self._error: BaseException | None = None
        self._ended = False
        self._lost = 0  # records that made room for newer ones, of those who have gone

    async def records(self, stream: _core.Stream) -> AsyncIterator[object]:
        reader = _Reader(stream.kind)
        self._join(reader)
        try:
            while True:
                while reader.records:
                    yield reader.records.popleft()
                if self._ended:
                    if self._error is not None:
                        raise self._error
                    return
                reader.news.clear()
                try:
                    await asyncio.wait_for(reader.news.wait(), stream.timeout)
                except asyncio.TimeoutError:
                    stream.silence()
        finally:
            self._leave(reader)

    def count_lost(self) -> int:
        return self._lost + sum(reader.lost for reader in self._readers)

    def close(self) -> None:
        """Ends the iterators; from any thread."""
        loop = self._loop
        if loop is not None and not loop.is_closed():
            if _running() is loop:
                self._end(None)
            else:
                loop.call_soon_threadsafe(self._end, None)

    def _join(self, reader: _Reader) -> None:
        loop = asyncio.get_running_loop()
        if self._loop not in (None, loop):
            raise RuntimeError("the receiver is read in another event loop already")
        self._readers.append(reader)
        if self._loop is None and not self._ended:
            self._loop = loop
            self._descriptor = self._receiver.descriptor
            loop.add_reader(self._descriptor, self._drain)

    def _leave(self, reader: _Reader) -> None:
        self._readers.remove(reader)
        self._lost += reader.lost
        if not self._readers:
            self._detach()

    def _detach(self) -> None:
        if self._loop is not None and not self._loop.is_closed():
            self._loop.remove_reader(self._descriptor)
        self._loop = None

    def _drain(self) -> None:
        try:
            records: typing.Optional[list[object]] = self._receiver.drain()
        except Exception as error:
            return self._end(error)
        if records is None:
            return self._end(None)
        for record in records:
            for reader in self._readers:
                reader.offer(record)

    def _end(self, error: BaseException | None) -> None:
        self._ended = True
        self._error = error
        self._detach()
        for reader in self._readers:
            reader.news.set()


def _running() -> asyncio.AbstractEventLoop | None:
    try:
        return asyncio.get_running_loop()
    except RuntimeError:
        return None
