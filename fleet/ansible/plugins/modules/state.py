#!/usr/bin/python
# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""Gives policies and access switches their values."""

DOCUMENTATION = r"""
module: state
short_description: Give policies and access switches of a device their values
version_added: 0.1.0
description:
  - Allows or forbids what the policy daemon govd controls on a device, such as camera or USB
    storage, with the client's C(govctl apply).
  - What is not named stays as it is.
  - Everything is checked before anything is changed. If the daemon refuses a value all the same,
    what was done is taken back.
options:
  policies:
    description: Dictionary of the policies, each with C(true) (allowed) or C(false) (forbidden).
    type: raw
    default: {}
  switches:
    description: Dictionary of the access switches, each with C(true) or C(false).
    type: raw
    default: {}
attributes:
  check_mode:
    description: The client's dry run.
    details: It sees a lock only where it keeps a policy off that is stored as on, and that no
      switch forces off. Elsewhere the run fails, and takes back what it did.
    support: full
  diff_mode:
    description: The policies and switches that change.
    support: full
requirements:
  - govctl on the device
notes:
  - Only root and the members of C(pellora-mdm) may change anything; use C(become).
  - Fails, with C(changed) set, when a value was changed and is not in force, for instance because a
    service has failed. The next run finds the value as wanted and does not fail;
    M(govd.device.state_facts) goes on telling that it is not in force.
seealso:
  - module: govd.device.state_facts
author:
  - The govd authors (@govd)
"""

EXAMPLES = r"""
- name: Neither camera nor USB storage
  govd.device.state:
    policies:
      CameraEnabled: false
      UsbStorageEnabled: false
  become: true

- name: Parental control, whatever the single policies say
  govd.device.state:
    switches:
      Parental control: false
  become: true
"""

RETURN = r"""
changes:
  description: What was changed, or would be in check mode.
  returned: success, and when a change is not in force
  type: list
  elements: dict
  contains:
    kind:
      description: C(policy) or C(switch).
      type: str
    key:
      description: The name.
      type: str
    before:
      description: The value before; null if there was none.
      type: bool
    value:
      description: The value now.
      type: bool
  sample: [{kind: policy, key: CameraEnabled, before: true, value: false}]
notes:
  description: What a person should know beside the changes.
  returned: success, and when a change is not in force
  type: list
  elements: str
  sample: ["CameraEnabled is not in force: org.pelloraos.appjaild1 is not on the bus"]
error:
  description: What went wrong, as in the client's JSON schema.
  returned: when the client tells an error
  type: dict
  sample: {name: locked, message: "CameraEnabled is locked; nothing was changed", nearest: []}
result:
  description: What the client tells beside the error. With C(obstacles), check mode also tells the
    C(changes) that would be made without them.
  returned: when the client tells an error
  type: dict
"""

import re

from ansible.module_utils.basic import AnsibleModule
from ansible.module_utils.parsing.convert_bool import boolean
from ansible_collections.govd.device.plugins.module_utils.govctl import result_of, run

NOT_IN_FORCE = 8
# What a line of a state file can name, as "key" or "key[de]".
KEY = re.compile(r"(?![# ])[^=\[\]\x00-\x1f\x7f]+(?<! )(\[[\w.@-]+\])?")


def group(module, name, option):
    """The lines of a state file for an option."""
    values = module.params[option]
    if not isinstance(values, dict):
        module.fail_json(msg="%s: %r is not a dictionary" % (option, values))
    lines = ["[%s]" % name]
    for key, value in values.items():
        if not KEY.fullmatch(key):
            module.fail_json(msg="%s: a state file cannot name %r" % (option, key))
        try:
            lines.append("%s=%s" % (key, str(boolean(value)).lower()))
        except TypeError:
            module.fail_json(msg="%s: %r of %r is neither true nor false" % (option, value, key))
    return "\n".join(lines) + "\n"


def lines_of(changes, member):
    """The values before or after the changes, as the difference is shown."""
    words = {True: "on", False: "off", None: "none"}
    return "".join("%s %s: %s\n" % (step["kind"], step["key"], words[step[member]])
                   for step in changes)


def main():
    module = AnsibleModule(
        argument_spec={"policies": {"type": "raw", "default": {}},
                       "switches": {"type": "raw", "default": {}}},
        supports_check_mode=True)
    wanted = group(module, "policy", "policies") + group(module, "switch", "switches")
    options = ["--dry-run"] if module.check_mode else []
    document = run(module, "apply", "-", *options, data=wanted)
    if module.check_mode and document.get("result", {}).get("obstacles"):
        # A dry run that meets an obstacle tells no changes.
        document["result"].update(run(module, "diff", "-", data=wanted).get("result", {}))
    result = result_of(module, document)
    changes = result["changes"]
    outcome = {"changed": bool(changes), "changes": changes, "notes": result["notes"],
               "diff": {"before": lines_of(changes, "before"),
                        "after": lines_of(changes, "value")}}
    if document["code"] == NOT_IN_FORCE:
        module.fail_json(msg="; ".join(result["notes"]), rc=NOT_IN_FORCE, **outcome)
    module.exit_json(**outcome)


if __name__ == "__main__":
    main()
