# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The verbs of the program, in the order of the help."""

from testbed.sim import names, view
from testbed.sim.commandline import Argument, Option, Verb, seconds, usage
from testbed.sim.completion import candidates
from testbed.sim.facts import ROWS, check_expectation, facts_of, value_of
from testbed.sim.output import NO, USAGE, Failure, can_be_steered
from testbed.sim.remote import RemoteDevice
from testbed.sim.script import run_script
from testbed.sim.text import nearest, printable

ORDERS = {  # by verb: the method, the signature of its arguments, and these
    "plug": ("Plug", "ss", lambda request: (request.arguments[0],
                                            request.options.get("label", ""))),
    "unplug": ("Unplug", "s", lambda request: (request.arguments or [""])[:1]),
    "launch": ("Launch", "s", lambda request: request.arguments),
    "certified": ("SetCertified", "b", lambda request: [request.arguments[0] == "yes"]),
    "stop": ("Stop", "s", lambda request: request.arguments),
    "start": ("Start", "s", lambda request: request.arguments),
    "fail": ("Fail", "ssd", lambda request: (*request.arguments[:2],
                                             float((request.arguments[2:] or [0])[0]))),
    "heal": ("Heal", "s", lambda request: request.arguments),
    "reset": ("Reset", "", lambda request: ()),
}


def run_device(request, output):
    """Runs a device. Raises Failure."""
    # Imported here, because these modules take longer to load than the other verbs take to run.
    from testbed.sim.server import serve  # pylint: disable=import-outside-toplevel
    serve(request, output)


def order(request, output):
    """Sends an order to the device. Raises Failure."""
    device = RemoteDevice(request.timeout)
    method, signature, arguments = ORDERS[request.verb.name]
    try:
        answer = device.order(method, signature, tuple(arguments(request)))
    except Failure as failure:
        # Only the device knows the labels: those nearest to an unknown one are asked from it.
        if request.verb.name == "unplug" and failure.code == USAGE and request.arguments:
            failure.nearest = nearest(request.arguments[0], labels(device))
        raise
    # The label is printed, because the device may have chosen it.
    output.write({"label": answer[0]} if answer else {}, f"{answer[0]}\n" if answer else "")


def labels(device):
    """The labels of the plugged media; none when the device does not answer."""
    try:
        return [medium["label"] for medium in device.state()["storage"]]
    except Failure:
        return []


def show_status(request, output):
    """Prints the state, with --watch each new one too. Raises Failure."""
    def show(state):
        text = view.status(state, output)
        # On a terminal each state replaces the last one; in a file it follows.
        output.write(state, view.screen(text) if steers else text)

    device = RemoteDevice(request.timeout)
    is_watching = "watch" in request.options
    steers = is_watching and not output.is_json and can_be_steered()
    if is_watching:
        device.follow()
    show(device.state())
    if is_watching and output.is_open:
        for state in device.changes():
            show(state)
            if not output.is_open:
                return


def list_services(request, output):
    """Lists the services. Raises Failure."""
    state = RemoteDevice(request.timeout).state()
    output.write({"services": state["services"]}, view.service_list(state, output))


def expect(request, output):
    """Waits until a fact has a value. Raises Failure."""
    *words, value = request.arguments
    key = " ".join(words)
    device = RemoteDevice(request.timeout)
    device.follow()
    found = value_of(facts_of(device.state()), key)
    changes = device.changes(device.end)
    while found != value and (state := next(changes, None)):
        found = value_of(facts_of(state), key)
    if found != value:
        raise Failure(NO, "unexpected", f"{printable(key)} is {found}, not {value}, after "
                      f"{request.timeout:g} s")
    output.write({"what": key, "value": found}, "")


def check_fault(arguments):
    """Raises Failure unless the words are a service and a fault."""
    if arguments[1:2] == ["slow"]:
        seconds("slow", "".join(arguments[2:3]), 0, names.LONGEST_DELAY)
    elif len(arguments) > 2:
        raise usage("only slow takes seconds")


def run(request, output):
    """Runs a script. Raises Failure."""
    run_script(request, output, VERBS)


def complete(request, output):
    """Prints the completions. Without a device there are no labels; a completion reports no
    failure."""
    def known_labels():
        try:
            return labels(RemoteDevice(request.timeout))
        except Failure:
            return []

    found = candidates(request.arguments, VERBS, known_labels)
    output.write({"candidates": found}, "".join(f"{word}\n" for word in found))


def one_of(known, description):
    """A place on the command line for one of a few words."""
    return Argument("|".join(known), description, known)


SERVICE = Argument("SERVICE", 'A service; "govd-sim services" names them.', tuple(names.SERVICES))
APPLICATIONS = tuple(names.IDENTIFIERS)
VERBS = {verb.name: verb for verb in (
    Verb("device", "Run the device on the system bus, and print each call that it gets.",
         run_device, is_for_scripts=False),
    Verb("status", "Draw the present state of the device.", show_status,
         options=(Option("watch", "Draw it again each time it changes."),)),
    Verb("services", "List the services of the device, and how each fares.", list_services),
    Verb("plug", "Plug in a USB stick or a memory card; it is mounted at once.", order,
         (one_of(names.MEDIA, "What to plug in."),),
         (Option("label", "What it is called (default: STICK or CARD).", "LABEL"),)),
    Verb("unplug", "Pull out what was plugged in.", order,
         (Argument("LABEL", "Which one; may be left out when only one is plugged in.",
                   is_optional=True),)),
    Verb("launch", "Start an application.", order,
         (Argument("APP", f"One of {', '.join(APPLICATIONS)}.", APPLICATIONS),)),
    Verb("certified", "Make the system of the device a certified one, or not.", order,
         (one_of(("yes", "no"), "Which of them."),)),
    Verb("stop", "Take a service off the bus.", order, (SERVICE,)),
    Verb("start", "Bring a service back to the bus.", order, (SERVICE,)),
    Verb("fail", "Let all calls of a service go wrong.", order,
         (SERVICE,
          one_of(names.FAULTS, "How: with an error, with no answer, after a time, or with an "
                               "answer of the wrong type."),
          Argument("SECONDS", "How slow.", is_optional=True)), check=check_fault),
    Verb("heal", "Let calls of a service go right again.", order, (SERVICE,)),
    Verb("reset", "Make the device what it was at the start.", order),
    Verb("expect", "Wait until something is so, and fail when it does not become so in time.",
         expect,
         (Argument("WHAT", f"One of {', '.join(ROWS)}.", tuple(ROWS)),
          Argument("NAME", "The application, service, USB mode or label that it is about.",
                   is_optional=True),
          Argument("VALUE", "What it has to be.")), check=check_expectation),
    Verb("run", "Run a script of such lines and of lines of govctl, up to the first that fails.",
         run, (Argument("SCRIPT", "The file."),), is_for_scripts=False),
    Verb("complete", "List what can follow on a command line, for shells.", complete,
         (Argument("WORD", "What is there so far, the last one unfinished.", is_optional=True,
                   is_repeated=True),), is_for_scripts=False),
)}
