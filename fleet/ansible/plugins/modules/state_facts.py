#!/usr/bin/python
# SPDX-FileCopyrightText: 2026 The govd authors
# SPDX-License-Identifier: BSD-3-Clause
"""What a device allows and what of it is in force, as facts."""

DOCUMENTATION = r"""
module: state_facts
short_description: Tell what a device allows, why, and whether it is in force
version_added: 0.1.0
description:
  - Reads all policies and access switches of the policy daemon govd, and looks at the device to
    tell which policies are in force, with the client's C(govctl dump) and C(govctl verify).
attributes:
  check_mode:
    description: Changes nothing in any case.
    support: full
  facts:
    description: Returns the fact C(govd).
    support: full
requirements:
  - govctl on the device
notes:
  - Every user may read. Without C(become) the stored values may stay unknown.
seealso:
  - module: govd.device.state
author:
  - The govd authors (@govd)
"""

EXAMPLES = r"""
- name: Look at the device
  govd.device.state_facts:
  become: true

- name: Stop where a policy is not in force
  ansible.builtin.assert:
    that: >-
      ansible_facts.govd.policies.values() | selectattr('state', 'eq', 'not-in-force') | length == 0
"""

RETURN = r"""
ansible_facts:
  description: Facts about the device.
  returned: success
  type: dict
  contains:
    govd:
      description: What the daemon and its client tell.
      type: dict
      contains:
        version:
          description: Version of the client.
          type: str
          sample: 0.1.0
        policies:
          description: Each policy by its name, with the members of the client's JSON schema.
          type: dict
          sample:
            CameraEnabled:
              value: false
              stored: false
              reason: stored
              enforced: true
              switches: []
              state: not-in-force
              seen: [org.pelloraos.appjaild1 is not on the bus]
        switches:
          description: Each access switch by its name, with its value and the policies it governs.
          type: dict
          sample: {Parental control: {value: true, policies: [BrowserEnabled]}}
        plugins:
          description: What plugins tell of their files; null if that is not known.
          type: list
          elements: dict
error:
  description: What went wrong, as in the client's JSON schema.
  returned: when the client tells an error
  type: dict
"""

from ansible.module_utils.basic import AnsibleModule
from ansible_collections.govd.device.plugins.module_utils.govctl import result_of, run


def by_key(*lists):
    """Joins the objects of the lists that have the same key."""
    joined = {}
    for entry in sum(lists, []):
        joined.setdefault(entry["key"], {}).update(entry)
    return joined


def main():
    module = AnsibleModule(argument_spec={}, supports_check_mode=True)
    dump = result_of(module, run(module, "dump"))
    verified = result_of(module, run(module, "verify"))
    module.exit_json(ansible_facts={"govd": {
        "version": dump["program"]["version"],
        "policies": by_key(dump["policies"], verified["policies"]),
        "switches": by_key(dump["switches"]),
        "plugins": dump["plugins"]}})


if __name__ == "__main__":
    main()
