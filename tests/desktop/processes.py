"""The programs of a session: started with what they write kept in files, ended in the opposite order."""

import os
import subprocess


class Processes:
    def __init__(self, folder):
        self._folder = folder
        self._running = []

    def start(self, command, environment, **arguments):
        """Their output goes to a file of the command's name."""
        log = open(self._folder / f"{os.path.basename(command[0])}.log", "ab")
        with log:
            process = subprocess.Popen(command, env=environment, cwd=self._folder, stdin=subprocess.DEVNULL,
                                       stdout=arguments.pop("stdout", log), stderr=log, **arguments)
        self._running.append(process)
        return process

    def start_and_ask(self, command, environment, option):
        """For those that write where they can be reached to a descriptor which `option` names; returns that line."""
        read, write = os.pipe()
        with open(read, encoding="ascii") as answer:
            self.start([*command, option.format(write)] if "{" in option else [*command, option, str(write)],
                       environment, pass_fds=[write])
            os.close(write)
            return answer.readline().strip()

    def stop(self):
        for process in reversed(self._running):
            process.terminate()
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        self._running.clear()
