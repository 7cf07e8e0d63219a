# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""The client govctl on the device, which all modules call."""

import json


def run(module, *arguments, **keywords):
    """Runs govctl with these arguments and returns its document. Keywords are those of
    run_command()."""
    program = module.get_bin_path("govctl", required=True)
    code, out, err = module.run_command([program, "--json"] + list(arguments), **keywords)
    try:
        return json.loads(out)
    except ValueError:
        module.fail_json(msg="govctl ended with %d: %s" % (code, err or out))


def result_of(module, document):
    """The result in a document. If it tells an error, the module fails with the client's words."""
    result = document.get("result", {})
    if "error" in document:
        module.fail_json(msg=document["error"]["message"], error=document["error"],
                         rc=document["code"], changed=result.get("changed", False), result=result)
    return result
