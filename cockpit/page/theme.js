// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause

// Is dark or light as Cockpit's own pages are: as chosen in Cockpit, otherwise as the browser says.
export function followTheme() {
    const dark = matchMedia("(prefers-color-scheme: dark)");
    const apply = (chosen = localStorage.getItem("shell:style")) =>
        document.documentElement.classList.toggle("pf-v5-theme-dark",
            chosen === "dark" || (chosen !== "light" && dark.matches));
    addEventListener("cockpit-style", ({ detail }) => apply(detail.style));
    addEventListener("storage", ({ key }) => { if (key === "shell:style") apply(); });
    dark.addEventListener("change", () => apply());
    apply();
}
