# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The base of all services: they appear on the bus and leave it, and fail on request."""

import concurrent.futures
import contextlib
import functools
import gc
import threading
from dataclasses import dataclass

import dbus.bus
import dbus.lowlevel
import dbus.mainloop.glib
import dbus.service
from dbusmock import mockobject
from gi.repository import GLib

INTROSPECTION = "org.freedesktop.DBus.Introspectable"
PROPERTIES = "org.freedesktop.DBus.Properties"
INVALID_ARGUMENTS = "org.freedesktop.DBus.Error.InvalidArgs"

dbus.mainloop.glib.threads_init()
MAIN_LOOP = dbus.mainloop.glib.DBusGMainLoop()


class Refusal(dbus.exceptions.DBusException):
    """An error reply of a service: its D-Bus name and a text."""

    def __init__(self, text, name=INVALID_ARGUMENTS):
        super().__init__(text, name=name)


class NameTaken(Exception):
    """The name has another owner on the bus, or the bus policy refuses it to this user."""


@dataclass(frozen=True)
class Fault:
    """What goes wrong with a call. An error, silence or death leaves the service's state as it is;
    a call with a late or a wrong answer is carried out."""
    kind: str = ""  # "error", "answer", "silence", "death"; "" for none of these
    delay: float = 0.0  # seconds between the call and its answer
    name: str = "org.freedesktop.DBus.Error.Failed"
    text: str = "Failed on purpose"
    answer: tuple = ()  # the D-Bus signature of a wrong answer, and its values


ERROR, SILENCE, DEATH = Fault("error"), Fault("silence"), Fault("death")


def error(name):
    """The fault that the answer is this error."""
    return Fault("error", name=name)


def late(seconds):
    """The fault that the right answer comes after so many seconds."""
    return Fault(delay=seconds)


def answer(signature, *values):
    """The fault that the answer has this signature and these values, which can be wrong."""
    return Fault("answer", answer=(signature, *values))


@dataclass(frozen=True)
class Call:
    """A call that a service has received. `error` is the name of the error reply, if any."""
    service: str
    path: str
    interface: str
    member: str
    arguments: tuple
    error: str


class ServiceObject(mockobject.DBusMockObject):
    """An object of a service. Properties can be written only where a setter is given for them."""

    def __init__(self, connection, path, interface, **keywords):
        self.setters = {}
        super().__init__(connection, path, interface, {}, "/dev/null", **keywords)

    def Set(self, interface_name, property_name, value, *_, **__):  # pylint: disable=invalid-name
        """Passes a value of the property's type to its setter."""
        setter = self.setters.get(property_name)
        if interface_name not in self.props or property_name not in self.props[interface_name]:
            raise Refusal(f"no such property {property_name}",
                          "org.freedesktop.DBus.Error.UnknownProperty")
        if setter is None:
            raise Refusal(f"{property_name} is read-only",
                          "org.freedesktop.DBus.Error.PropertyReadOnly")
        if type(value) is not type(self.props[interface_name][property_name]):
            raise Refusal(f"{property_name} is of another type")
        setter(value)


# AddMethod() of the library sets methods on the class that all objects share, so that a method of
# another interface called "Set" would replace these.
PROPERTY_METHODS = {member: getattr(ServiceObject, member) for member in ("Get", "GetAll", "Set")}


class Loop(threading.Thread):
    """The thread that runs the services' event loop, if the main thread does not."""

    def __init__(self):
        super().__init__(daemon=True)
        self.loop = GLib.MainLoop()
        self.thread = None

    def run(self):
        self.thread = threading.current_thread()
        # Else another thread can come to free a bus connection, which damages the memory of the bus
        # library. What refers to itself stays until the process ends.
        gc.disable()
        self.loop.run()


LOOP = Loop()


def on_loop(method):
    """Runs a method in the services' thread; its caller waits for the result."""
    @functools.wraps(method)
    def wrapper(*arguments, **keywords):
        if threading.current_thread() is LOOP.thread:
            return method(*arguments, **keywords)
        result = concurrent.futures.Future()

        def run():
            try:
                result.set_result(method(*arguments, **keywords))
            except BaseException as exception:  # pylint: disable=broad-except
                result.set_exception(exception)
            return GLib.SOURCE_REMOVE
        GLib.idle_add(run)
        return result.result(60)
    return wrapper


@contextlib.contextmanager
def standstill():
    """Blocks the services' thread as long as the context lasts."""
    begun, end = threading.Event(), threading.Event()

    def hold():
        begun.set()
        end.wait()
        return GLib.SOURCE_REMOVE
    GLib.idle_add(hold)
    begun.wait()
    try:
        yield
    finally:
        end.set()


class Service:
    """A service of the device on the system bus, absent until appear().

    Each service has a class, which gives its NAME, adds its objects in create() and holds its
    state. The state is kept while the service is absent. Each appear() makes a new bus connection
    with a new unique name.
    """
    NAME = ""

    def __init__(self):
        self.calls = []  # each Call so far, without introspection
        self.changed = lambda: None  # run after each change of the state
        self.called = lambda call: None  # run after each call
        self._connection = None
        self._objects = {}
        self._faults = {}

    @property
    def present(self):
        """Whether the service is on the bus."""
        return self._connection is not None

    @on_loop
    def appear(self):
        """Takes the name on the bus. Raises NameTaken."""
        if self.present:
            return
        self._connection = dbus.bus.BusConnection(dbus.bus.BusConnection.TYPE_SYSTEM,
                                                  mainloop=MAIN_LOOP)
        self._connection.set_exit_on_disconnect(False)
        self._connection.add_message_filter(self._filter)
        self.create()
        try:
            reply = self._connection.request_name(self.NAME, dbus.bus.NAME_FLAG_DO_NOT_QUEUE)
        except dbus.exceptions.DBusException:
            reply = None
        if reply != dbus.bus.REQUEST_NAME_REPLY_PRIMARY_OWNER:
            self.leave()
            raise NameTaken(self.NAME)

    @on_loop
    def leave(self):
        """Drops the bus connection, as a process that ends; pending calls stay unanswered."""
        if not self.present:
            return
        for path in list(self._objects):
            self.remove_object(path)
        self._connection.close()
        self._connection = None

    def create(self):
        """Adds the objects of the service, each time it appears."""
        raise NotImplementedError

    @on_loop
    def fail(self, fault, member=None):
        """Applies a fault to all calls from now on, or to those of one member."""
        self._faults[member] = fault

    @on_loop
    def mend(self):
        """Removes all faults."""
        self._faults.clear()

    @on_loop
    def signal(self, path, interface, member, signature, *values):
        """Sends a signal, whose content need not be valid for the interface."""
        message = dbus.lowlevel.SignalMessage(path, interface, member)
        message.append(*values, signature=signature)
        self._connection.send_message(message)

    def add_object(self, path, interface, methods=(), **keywords):
        """Adds an object, or replaces the one at this path. Each method is a row of its name, the
        signatures of arguments and answer, and a function that takes the arguments."""
        if path in self._objects:
            self.remove_object(path)
        self._objects[path] = mock = ServiceObject(self._connection, path, interface, **keywords)
        mockobject.objects[path] = mock
        self.add_methods(path, interface, methods)
        return mock

    def add_methods(self, path, interface, methods):
        """Adds methods to an object."""
        for member, takes, gives, function in methods:
            self._objects[path].AddMethod(interface, member, takes, gives, method_of(function))

    def remove_object(self, path):
        """Removes an object."""
        self._objects.pop(path).remove_from_connection()
        mockobject.objects.pop(path, None)  # another service may have the same path

    def object(self, path):
        """The object at this path."""
        return self._objects[path]

    def _filter(self, connection, message):
        is_call = message.get_type() == dbus.lowlevel.MESSAGE_TYPE_METHOD_CALL
        if not is_call or message.get_interface() == INTROSPECTION:
            return dbus.lowlevel.HANDLER_RESULT_NOT_YET_HANDLED
        fault = self._faults.get(message.get_member(), self._faults.get(None, Fault()))
        reply = self._carry_out(message, fault)
        failed = isinstance(reply, dbus.lowlevel.ErrorMessage)
        call = Call(self.NAME, message.get_path(), message.get_interface(), message.get_member(),
                    tuple(message.get_args_list()), reply.get_error_name() if failed else "")
        self.calls.append(call)
        self.called(call)
        if fault.kind == "death":
            GLib.idle_add(lambda: self.leave() or GLib.SOURCE_REMOVE)
        elif fault.kind != "silence" and not message.get_no_reply():
            send_after(fault.delay, connection, reply)
        return dbus.lowlevel.HANDLER_RESULT_HANDLED

    def _carry_out(self, message, fault):
        if fault.kind == "error":
            return dbus.lowlevel.ErrorMessage(message, fault.name, fault.text)
        if fault.kind in ("silence", "death"):
            return dbus.lowlevel.MethodReturnMessage(message)
        try:
            signature, values = self._run(message)
        except dbus.exceptions.DBusException as exception:
            return dbus.lowlevel.ErrorMessage(message, exception.get_dbus_name(),
                                              exception.get_dbus_message())
        if fault.kind == "answer":
            signature, *values = fault.answer
        reply = dbus.lowlevel.MethodReturnMessage(message)
        reply.append(*values, signature=signature)
        return reply

    def _run(self, message):
        mock = self._objects.get(message.get_path())
        if mock is None:
            raise Refusal(f"There is nothing at {message.get_path()}",
                          "org.freedesktop.DBus.Error.UnknownObject")
        member, interface = message.get_member(), message.get_interface()
        try:
            method = mock.methods[interface][member][3]
            takes = mock.methods[interface][member][0]
        except KeyError:
            method = PROPERTY_METHODS.get(member) if interface == PROPERTIES else None
            if method is None:
                raise Refusal(f"There is no {interface}.{member}",
                              "org.freedesktop.DBus.Error.UnknownMethod") from None
            takes = getattr(mockobject.DBusMockObject, member)._dbus_in_signature
        if message.get_signature() != takes:
            raise Refusal(f"{member} takes arguments of the types \"{takes}\"")
        result = method(mock, *message.get_args_list())
        gives = getattr(method, "_dbus_out_signature", None)
        return (gives, [result]) if gives else ("", [])


def method_of(function):
    """A function as the code that a mock object runs."""
    return lambda mock, *arguments: function(*arguments)


def send_after(delay, connection, message):
    """Sends a message after so many seconds; it is lost when its connection is closed by then."""
    if not delay:
        connection.send_message(message)
        return

    def send():
        if connection.get_is_connected():
            connection.send_message(message)
        return GLib.SOURCE_REMOVE
    GLib.timeout_add(int(delay * 1000), send)
