"""One part of a window, as whoever asks for it is told."""

from typing import NamedTuple


class Part(NamedTuple):
    """states are those of the accessibility bus; box is x, y, width, height on the screen."""

    role: str
    name: str
    description: str
    states: frozenset
    box: tuple
    object: object = None

    @property
    def enabled(self):
        return "enabled" in self.states

    @property
    def focused(self):
        return "focused" in self.states

    @property
    def checked(self):
        return "checked" in self.states
