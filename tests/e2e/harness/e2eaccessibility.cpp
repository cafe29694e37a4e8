#include "e2eaccessibility.h"

#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusVariant>

#include <atomic>

namespace {
const QString kRoot = QStringLiteral("/org/a11y/atspi/accessible/root");
const QString kAccessible = QStringLiteral("org.a11y.atspi.Accessible");
const QString kComponent = QStringLiteral("org.a11y.atspi.Component");
const QString kText = QStringLiteral("org.a11y.atspi.Text");
std::atomic<int> g_connections{0};

// An object reference: (bus name, object path).
E2eNode readReference(const QDBusArgument &argument)
{
    E2eNode node;
    QDBusObjectPath path;
    argument.beginStructure();
    argument >> node.service >> path;
    argument.endStructure();
    node.path = path.path();
    return node;
}

QList<E2eNode> readReferences(const QDBusArgument &argument)
{
    QList<E2eNode> nodes;
    argument.beginArray();
    while (!argument.atEnd())
        nodes << readReference(argument);
    argument.endArray();
    return nodes;
}
} // namespace

E2eAccessibility::E2eAccessibility() = default;

E2eAccessibility::~E2eAccessibility()
{
    if (m_bus)
        QDBusConnection::disconnectFromBus(m_connectionName);
    delete m_bus;
}

bool E2eAccessibility::connectTo(const QString &busAddress)
{
    if (busAddress.isEmpty())
        return false;
    m_connectionName = QStringLiteral("e2e-a11y-%1").arg(g_connections++);
    m_bus = new QDBusConnection(QDBusConnection::connectToBus(busAddress, m_connectionName));
    return m_bus->isConnected();
}

bool E2eAccessibility::isConnected() const
{
    return m_bus && m_bus->isConnected();
}

static QDBusMessage call(QDBusConnection *bus, const E2eNode &node, const QString &interface, const QString &method,
                         const QVariantList &arguments = {})
{
    QDBusMessage message = QDBusMessage::createMethodCall(node.service, node.path, interface, method);
    message.setArguments(arguments);
    return bus->call(message, QDBus::Block, 5000);
}

E2eNode E2eAccessibility::application(const QString &name) const
{
    return applications(name).value(0);
}

QList<E2eNode> E2eAccessibility::applications(const QString &name) const
{
    QList<E2eNode> found;
    if (!isConnected())
        return found;
    const E2eNode registry{QStringLiteral("org.a11y.atspi.Registry"), kRoot};
    for (const E2eNode &app : children(registry)) {
        if (this->name(app) == name)
            found << app;
    }
    return found;
}

QList<E2eNode> E2eAccessibility::children(const E2eNode &node) const
{
    const QDBusMessage reply = call(m_bus, node, kAccessible, QStringLiteral("GetChildren"));
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    return readReferences(reply.arguments().constFirst().value<QDBusArgument>());
}

E2eNode E2eAccessibility::parent(const E2eNode &node) const
{
    return readReference(property(node, kAccessible, QStringLiteral("Parent")).value<QDBusArgument>());
}

QVariant E2eAccessibility::property(const E2eNode &node, const QString &interface, const QString &name) const
{
    const QDBusMessage reply = call(m_bus, node, QStringLiteral("org.freedesktop.DBus.Properties"),
                                    QStringLiteral("Get"), {interface, name});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    return reply.arguments().constFirst().value<QDBusVariant>().variant();
}

QString E2eAccessibility::name(const E2eNode &node) const
{
    return property(node, kAccessible, QStringLiteral("Name")).toString();
}

QString E2eAccessibility::description(const E2eNode &node) const
{
    return property(node, kAccessible, QStringLiteral("Description")).toString();
}

QString E2eAccessibility::role(const E2eNode &node) const
{
    const QDBusMessage reply = call(m_bus, node, kAccessible, QStringLiteral("GetRoleName"));
    return reply.arguments().value(0).toString();
}

QRect E2eAccessibility::extents(const E2eNode &node) const
{
    const QDBusMessage reply = call(m_bus, node, kComponent, QStringLiteral("GetExtents"), {QVariant(uint(0))});
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    const QDBusArgument argument = reply.arguments().constFirst().value<QDBusArgument>();
    int x = 0, y = 0, width = 0, height = 0;
    argument.beginStructure();
    argument >> x >> y >> width >> height;
    argument.endStructure();
    return QRect(x, y, width, height);
}

QList<uint> E2eAccessibility::states(const E2eNode &node) const
{
    const QDBusMessage reply = call(m_bus, node, kAccessible, QStringLiteral("GetState"));
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    const QVariant value = reply.arguments().constFirst();
    if (value.canConvert<QDBusArgument>()) {
        QList<uint> words;
        value.value<QDBusArgument>() >> words;
        return words;
    }
    return value.value<QList<uint>>();
}

bool E2eAccessibility::hasState(const E2eNode &node, State state) const
{
    return states(node).value(int(state) / 32) & (1u << (int(state) % 32));
}

QString E2eAccessibility::text(const E2eNode &node) const
{
    const QDBusMessage reply = call(m_bus, node, kText, QStringLiteral("GetText"), {QVariant(0), QVariant(-1)});
    return reply.arguments().value(0).toString();
}

bool E2eAccessibility::walk(const E2eNode &node, const Match &match, bool visitCells, bool visitPages, int limit,
                            QList<E2eNode> &found, int depth) const
{
    if (depth > 60)
        return false;
    for (const E2eNode &child : children(node)) {
        const QString childRole = role(child);
        if (match(child, childRole, name(child))) {
            found << child;
            if (found.size() == limit)
                return true;
        }
        const bool skip = (!visitCells && childRole == QLatin1String("table"))
                          || (!visitPages && childRole == QLatin1String("web document"));
        if (!skip && walk(child, match, visitCells, visitPages, limit, found, depth + 1))
            return true;
    }
    return false;
}

QList<E2eNode> E2eAccessibility::findAll(const E2eNode &root, const Match &match, bool visitCells, int limit) const
{
    QList<E2eNode> found;
    if (!isConnected() || !root.isValid())
        return found;
    // From an application or a window the search stays among the widgets;
    // page contents are searched from the page or an element of it.
    const QString rootRole = role(root);
    const bool visitPages = rootRole != QLatin1String("application") && rootRole != QLatin1String("frame");
    walk(root, match, visitCells, visitPages, limit, found, 0);
    return found;
}

QList<E2eNode> E2eAccessibility::findAll(const E2eNode &root, const QString &role, const QString &name,
                                         int limit) const
{
    return findAll(
        root,
        [&](const E2eNode &, const QString &nodeRole, const QString &nodeName) {
            return (role.isEmpty() || nodeRole == role) && (name.isEmpty() || nodeName == name);
        },
        role == QLatin1String("cell"), limit);
}

E2eNode E2eAccessibility::find(const E2eNode &root, const QString &role, const QString &name) const
{
    return findAll(root, role, name, 1).value(0);
}

QString E2eAccessibility::dump(const E2eNode &root, int maxDepth) const
{
    QString out;
    std::function<void(const E2eNode &, int)> print = [&](const E2eNode &node, int depth) {
        const QRect box = extents(node);
        const QString nodeRole = role(node);
        const QList<uint> words = states(node);
        QStringList flags;
        for (State state : {Enabled, Focused, Selected, Showing})
            if (words.value(int(state) / 32) & (1u << (int(state) % 32)))
                flags << QString::number(int(state));
        out += QStringLiteral("%1%2 \"%3\" (%4,%5 %6x%7) [%8]\n")
                   .arg(QString(depth * 2, QLatin1Char(' ')), nodeRole, name(node))
                   .arg(box.x())
                   .arg(box.y())
                   .arg(box.width())
                   .arg(box.height())
                   .arg(flags.join(QLatin1Char(',')));
        // A table's cells: the first rows are enough to see how they are named.
        const bool table = nodeRole == QLatin1String("table");
        if (depth < maxDepth && (!table || depth + 1 == maxDepth))
            for (const E2eNode &child : children(node))
                print(child, depth + 1);
    };
    if (isConnected() && root.isValid())
        print(root, 0);
    return out;
}
