#pragma once

#include <QDBusConnection>
#include <QList>
#include <QRect>
#include <QString>

#include <functional>

// One object on the accessibility bus: a widget, a tab, a table cell, or an
// element of a web page inside the host.
struct E2eNode
{
    QString service;
    QString path;
    bool isValid() const { return !service.isEmpty() && !path.isEmpty(); }
    bool operator==(const E2eNode &other) const { return service == other.service && path == other.path; }
};

// Reads the accessibility tree (AT-SPI) of the programs on an E2eDesktop: the
// role, name, screen extents, states and text of each object, as a screen
// reader sees them. Tests find widgets by what they are and act on them with
// real input (E2eInput); nothing here reaches into the product.
//
//   E2eAccessibility tree;
//   tree.connectTo(desktop.accessibilityBusAddress());
//   const E2eNode host = tree.application("orvexhost");
//   const QRect tab = tree.extents(tree.find(host, "page tab", "Offene Rechnungen"));
class E2eAccessibility
{
public:
    // The states the tests ask about (AT-SPI's numbering).
    enum State { Enabled = 8, Focused = 12, Selected = 23, Sensitive = 24, Showing = 25, Visible = 30 };

    E2eAccessibility();
    ~E2eAccessibility();

    bool connectTo(const QString &busAddress);
    bool isConnected() const;

    // The top object of the running application with this name (invalid if none).
    E2eNode application(const QString &name) const;
    // Every running application with this name (two hosts on one desktop).
    QList<E2eNode> applications(const QString &name) const;

    QList<E2eNode> children(const E2eNode &node) const;
    E2eNode parent(const E2eNode &node) const;
    QString name(const E2eNode &node) const;
    QString description(const E2eNode &node) const; // a widget's tool tip, for instance
    QString role(const E2eNode &node) const; // "push button", "page tab", "heading", ...
    QRect extents(const E2eNode &node) const; // in screen coordinates
    bool hasState(const E2eNode &node, State state) const;
    QList<uint> states(const E2eNode &node) const; // AT-SPI's bit words
    // The text of an editable or text object (a note, a line edit).
    QString text(const E2eNode &node) const;

    using Match = std::function<bool(const E2eNode &node, const QString &role, const QString &name)>;
    // Every object below root (depth first, in tree order) that match accepts.
    // Table cells are only visited when asked for (role "cell"); the contents
    // of web pages only when root is a page or inside one, not from an
    // application or a window (a board of 200 cards is a large tree).
    QList<E2eNode> findAll(const E2eNode &root, const Match &match, bool visitCells = false, int limit = -1) const;
    // The first object below root with this role and name (either may be empty
    // for "any"); invalid when there is none.
    E2eNode find(const E2eNode &root, const QString &role, const QString &name) const;
    QList<E2eNode> findAll(const E2eNode &root, const QString &role, const QString &name, int limit = -1) const;

    // A readable outline of the tree below root, for failure messages.
    QString dump(const E2eNode &root, int maxDepth = 40) const;

private:
    QVariant property(const E2eNode &node, const QString &interface, const QString &name) const;
    // True once limit objects are found.
    bool walk(const E2eNode &node, const Match &match, bool visitCells, bool visitPages, int limit,
              QList<E2eNode> &found, int depth) const;

    QString m_connectionName;
    QDBusConnection *m_bus = nullptr;
};
