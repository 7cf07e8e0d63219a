// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include "gdbus.h"

static const char service[] = "org.kvt.PolicyManager", path[] = "/org/kvt/PolicyManager";

static int is_true(GVariant *boxed)
{
    GVariant *value = g_variant_get_variant(boxed);
    const int result = g_variant_get_boolean(value);
    g_variant_unref(value);
    return result;
}

static void on_policy(GovdPolicy *policies, const char *key, GVariant *value, GString *signals)
{
    (void)policies;
    g_string_append_printf(signals, "PolicyChanged %s %d\n", key, is_true(value));
}

static void on_switch(GovdSwitch *switches, const char *key, GVariant *value, GString *signals)
{
    (void)switches;
    g_string_append_printf(signals, "SwitchChanged %s %d\n", key, is_true(value));
}

static GVariant *off(void)
{
    return g_variant_new_variant(g_variant_new_boolean(FALSE));
}

/// Calls each method of the daemon once, and prints the results, then the signals.
int main(void)
{
    GError *error = NULL;
    GString *signals = g_string_new("");
    GovdPolicy *policies = govd_policy_proxy_new_for_bus_sync(
        G_BUS_TYPE_SYSTEM, G_DBUS_PROXY_FLAGS_NONE, service, path, NULL, &error);
    GovdSwitch *switches = govd_switch_proxy_new_for_bus_sync(
        G_BUS_TYPE_SYSTEM, G_DBUS_PROXY_FLAGS_NONE, service, path, NULL, &error);
    g_signal_connect(policies, "policy-changed", G_CALLBACK(on_policy), signals);
    g_signal_connect(switches, "switch-changed", G_CALLBACK(on_switch), signals);

    GVariant *value = NULL;
    GVariant *types = NULL;
    gboolean accepted = FALSE;
    char **keys = NULL;
    if (!govd_policy_call_key_value_sync(policies, "CameraEnabled", &value, NULL, &error))
        g_error("%s", error->message);
    g_print("%d\n", is_true(value));
    if (!govd_policy_call_set_key_value_sync(policies, "NfcEnabled", off(), &accepted, NULL,
                                             &error))
        g_error("%s", error->message);
    g_print("%d\n", accepted);
    if (!govd_switch_call_keys_sync(switches, &keys, NULL, &error))
        g_error("%s", error->message);
    g_print("%s\n", keys[0]);
    if (!govd_switch_call_key_policy_types_sync(switches, keys[0], &types, NULL, &error))
        g_error("%s", error->message);
    for (gsize i = 0; i < g_variant_n_children(types); ++i) {
        gint32 type = 0;
        g_variant_get_child(types, i, "i", &type);
        g_print("%d\n", type);
    }
    if (!govd_switch_call_key_value_sync(switches, keys[0], &value, NULL, &error))
        g_error("%s", error->message);
    g_print("%d\n", is_true(value));
    if (!govd_switch_call_set_key_value_sync(switches, keys[0], off(), &accepted, NULL, &error))
        g_error("%s", error->message);
    g_print("%d\n", accepted);

    while (!strstr(signals->str, "SwitchChanged"))
        g_main_context_iteration(NULL, TRUE);
    g_print("%s", signals->str);
    return 0;
}
