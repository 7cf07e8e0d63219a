# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The main function of govd-sim."""

import os
import signal
import sys

from testbed.sim.commandline import (asks_for_json, named_verb, parse, program_help, verb_help)
from testbed.sim.output import DONE, NO_OUTPUT, PROGRAM, Failure, Output
from testbed.sim.verbs import VERBS


def main(version):
    """Runs the verb of the command line, and ends the process."""
    occupy_standard_descriptors()
    signal.signal(signal.SIGINT, signal.SIG_DFL)
    words = [os.fsencode(word).decode(errors="replace") for word in sys.argv[1:]]
    output = Output(asks_for_json(words), named_verb(words, VERBS))
    code = DONE
    try:
        request = parse(words, VERBS)
        if "help" in request.options:
            output = Output(False, None)
            output.write(None, verb_help(request.verb) if request.verb else program_help(VERBS))
        elif "version" in request.options:
            output = Output(False, None)
            output.write(None, f"{PROGRAM} {version}\n")
        else:
            request.verb.run(request, output)
    except Failure as failure:
        output.fail(failure)
        code = failure.code
    sys.exit(NO_OUTPUT if output.has_failed else code)


def occupy_standard_descriptors():
    """Opens /dev/null on closed standard descriptors. Otherwise the connection to the bus could get
    one of these numbers, and the output would be written into it."""
    for descriptor in range(3):
        try:
            os.fstat(descriptor)
        except OSError:
            os.open(os.devnull, os.O_RDWR)
