#!/usr/bin/env python3
"""Counts plants."""

from __future__ import annotations

import asyncio
from dataclasses import dataclass, field


@dataclass(frozen=True)
class Bed:
    name: str
    plants: list[str] = field(default_factory=list)

    @property
    def size(self) -> int:
        return len(self.plants)


async def water(beds: list[Bed], *, amount: float = 1.5, **options) -> None:
    for bed in beds:
        match bed:
            case Bed(name="roses", plants=[first, *_]):
                print(f"{first!r} gets {amount:.1f} litres")
            case _ if bed.size > 3:
                await asyncio.sleep(0)
            case _:
                pass


if __name__ == "__main__":
    beds = [Bed(n) for n in ("roses", "beans") if n]
    try:
        asyncio.run(water(beds))
    except (OSError, ValueError) as error:
        raise SystemExit(1) from error
