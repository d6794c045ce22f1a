"""Waiting for a state, with a deadline that nothing but a fault reaches."""

import time

PATIENCE = 30  # seconds
POLL = 0.05


def wait(condition, what, timeout=PATIENCE, poll=POLL):
    """Waits until condition() is true, and returns its value."""
    end = time.monotonic() + timeout
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError(f"{what} did not come within {timeout} s")
        time.sleep(poll)
