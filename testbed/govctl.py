# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The installed client govctl as processes of the test."""

import functools
import json
import pathlib

import jsonschema

from testbed import program

PROGRAM = "/usr/bin/govctl"
SCHEMA = pathlib.Path("/usr/share/govctl/output.schema.json")
WATCHING = "watching org.kvt.PolicyManager\n"
BUS_ADDRESS = "DBUS_SYSTEM_BUS_ADDRESS"
NO_BUS = {BUS_ADDRESS: "unix:path=/nonexistent"}

# The start of a bash script: its descriptor 3 is a pipe without a reader. The pipe is first opened
# for reading and writing, because opening one end alone waits for the other.
PIPE_WITHOUT_READER = "mkfifo /tmp/pipe; exec 4<>/tmp/pipe 3>/tmp/pipe 4<&-; rm /tmp/pipe; "


class Outcome(program.Outcome):
    """The result of one run of the client."""

    @property
    def lines(self):
        """The lines of its standard output."""
        return self.out.splitlines()

    @property
    def document(self):
        """Its standard output, which must be one line of JSON, and nothing on standard error."""
        document = valid(self.out)
        assert self.out.count("\n") == 1
        assert (document["code"], self.err) == (self.code, "")
        return document

    @property
    def result(self):
        """The part of the document that tells what was found or done."""
        return self.document["result"]

    @property
    def error(self):
        """The name of the error in the document."""
        return self.document["error"]["name"]


class Govctl(program.Program):
    """The client with these arguments; an argument with blanks is split into words."""
    OUTCOME = Outcome

    def __init__(self, *arguments, **keywords):
        words = arguments if len(arguments) != 1 else arguments[0].split()
        super().__init__([PROGRAM, *words], **keywords)


class Shell(program.Program):
    """A script of bash that runs the client."""
    OUTCOME = Outcome

    def __init__(self, script, **keywords):
        super().__init__(["bash", "-c", script], **keywords)


def run(*arguments, **keywords):
    """Runs the client to its end, with the arguments of Govctl."""
    with Govctl(*arguments, **keywords) as client:
        return client.finish()


def result(*arguments, **keywords):
    """The member "result" that a run of the client with --json gives."""
    words = arguments if len(arguments) != 1 else arguments[0].split()
    return run("--json", *words, **keywords).result


def shell(script, **keywords):
    """Runs a script of bash to its end."""
    with Shell(script, **keywords) as process:
        return process.finish()


def watch(*options, **keywords):
    """The client running "watch". A context that ends it."""
    client = Govctl("watch", *options, **keywords)
    client.wait_for_err(WATCHING)
    return client


def valid(line):
    """Parses a line of JSON and checks it against the schema; fields that the schema does not list
    are refused too."""
    document = json.loads(line)
    validator().validate(document)
    return document


def policy_in(result, key):
    """The policy `key` in a result that lists several."""
    policy, = [policy for policy in result["policies"] if policy["key"] == key]
    return policy


@functools.lru_cache(maxsize=None)
def validator():
    """The validator of the installed schema."""
    schema = json.loads(SCHEMA.read_text())
    jsonschema.Draft7Validator.check_schema(schema)
    return jsonschema.Draft7Validator(closed(schema))


def closed(schema):
    """The schema, with "additionalProperties": false in each object."""
    if isinstance(schema, list):
        return [closed(item) for item in schema]
    if not isinstance(schema, dict):
        return schema
    listed = {"additionalProperties": False} if "properties" in schema and "type" in schema else {}
    return {**listed, **{name: closed(item) for name, item in schema.items()}}
