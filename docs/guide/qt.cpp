/// A Qt program: the cache beside its application object, and a long read beside its event loop.
#include <QCoreApplication>
#include <QThread>
#include <memory>
#include <tarnel/tarnel.hpp>

//! [start]
int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv); // Or a QApplication. It comes first, and goes last.
    tarnel::Cache cache;
    const auto launch = cache.start();
    if (!launch) {
        qCritical("%s", launch.error().what());
        return 1;
    }
    //! [start]
    if (!cache.add<tarnel::User>({{tarnel::user::id(7), tarnel::user::name(QStringLiteral("Ада"))}}))
        return 1;
    //! [read]
    // On a thread of its own, so that windows stay alive; what it has read goes to the event loop.
    const std::unique_ptr<QThread> reader(QThread::create([&] {
        QString names;
        if (const auto users = cache.all<tarnel::User>()) {
            for (const tarnel::User &user : *users)
                names += tarnel::qstring(user.name);
        }
        const auto show = [names] {
            qInfo("%s", qUtf8Printable(names));
            QCoreApplication::exit(names == QStringLiteral("Ада") ? 0 : 1);
        };
        QMetaObject::invokeMethod(&application, show, Qt::QueuedConnection);
    }));
    reader->start();
    //! [read]
    //! [end]
    const int status = QCoreApplication::exec();
    reader->wait();
    cache.stop(); // It would stop at its end as well: before the application object, which was made before it.
    return status;
}
//! [end]
