// SPDX-FileCopyrightText: 2026 The govd authors
// SPDX-License-Identifier: BSD-3-Clause
#include <QObject>
#include <QtPlugin>

/// Another class with the interface identifier of lock plugins.
class Stranger
{
public:
    virtual ~Stranger() = default;
};
Q_DECLARE_INTERFACE(Stranger, "org.kvt.sourcerestriction")

/// A plugin with the interface identifier of lock plugins and an object of another class.
class Plugin : public QObject, public Stranger
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.kvt.sourcerestriction")
    Q_INTERFACES(Stranger)
};

#include "wrongclass.moc"
