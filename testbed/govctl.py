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

# The start of a script of bash: its descriptor 3 is a pipe that nobody reads. Opened for reading
# and writing first, because opening one end alone waits for the other.
PIPE_WITHOUT_READER = "mkfifo /tmp/pipe; exec 4<>/tmp/pipe 3>/tmp/pipe 4<&-; rm /tmp/pipe; "


class Outcome(program.Outcome):
    """What one run of the client gave."""

    @property
    def lines(self):
        """The lines of its standard output."""
        return self.out.splitlines()

    @property
    def document(self):
        """The only line of its standard output as a document, which is all that it wrote."""
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
    """The client with these arguments; those that stand in one text with blanks are split."""
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
    """Runs the client to its end, as Govctl has it."""
    with Govctl(*arguments, **keywords) as client:
        return client.finish()


def result(*arguments, **keywords):
    """What a run of the client with --json has found or done."""
    words = arguments if len(arguments) != 1 else arguments[0].split()
    return run("--json", *words, **keywords).result


def shell(script, **keywords):
    """Runs a script of bash to its end."""
    with Shell(script, **keywords) as process:
        return process.finish()


def watch(*options, **keywords):
    """The client that watches. A context that ends it."""
    client = Govctl("watch", *options, **keywords)
    client.wait_for_err(WATCHING)
    return client


def valid(line):
    """A line of JSON as the document that the schema must allow. Stricter than the language: a
    field that is not documented is wrong."""
    document = json.loads(line)
    validator().validate(document)
    return document


def policy_in(result, key):
    """The policy `key` in the result of a verb that is about several."""
    policy, = [policy for policy in result["policies"] if policy["key"] == key]
    return policy


@functools.lru_cache(maxsize=None)
def validator():
    """The check against the installed schema."""
    schema = json.loads(SCHEMA.read_text())
    jsonschema.Draft7Validator.check_schema(schema)
    return jsonschema.Draft7Validator(closed(schema))


def closed(schema):
    """The schema, with no fields in an object but those that it lists."""
    if isinstance(schema, list):
        return [closed(item) for item in schema]
    if not isinstance(schema, dict):
        return schema
    listed = {"additionalProperties": False} if "properties" in schema and "type" in schema else {}
    return {**listed, **{name: closed(item) for name, item in schema.items()}}
