// The last events of a monitoring centre in a window: a client with Qt Widgets, and so with an application object of
// its own. Every call is made on a thread beside the window's, which never waits for one.
//
//     ./widgets          shows the window; the file "CacheDb" is in the current directory, or made there
//     ./widgets --try    uses the window by itself, prints what it shows, and closes it

#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTableView>
#include <QTextStream>
#include <QThreadPool>
#include <QVBoxLayout>

#include <tarnel/tarnel.hpp>

#include <array>
#include <atomic>

namespace {

constexpr int lastEvent = 50000;

/// What a row shows.
struct Row {
    unsigned int event;
    unsigned int site;
    QString siteName;
    QString section;
};

/// The cache with what this client does with it, for one thread.
class History
{
public:
    using Tell = std::function<bool(std::size_t stored)>;

    /// Fills a new cache, as a server would; `tell` hears how many events there are, and may cancel.
    void start(const Tell &tell)
    {
        // A real client asks the server for what is missing, also after a cancelled load.
        if (!m_cache.start().value().isNew())
            return;
        std::vector<tarnel::Fields<tarnel::Site>> sites;
        std::vector<tarnel::Fields<tarnel::Event>> events;
        // A site has one device here, of the same number.
        for (int i = 1; i <= 5000; ++i) {
            const tarnel::Fields<tarnel::Section> vault{tarnel::section::id(1), tarnel::section::name("Vault")};
            const tarnel::Fields<tarnel::Device> device{tarnel::device::id(i), tarnel::device::sections({vault})};
            sites.push_back({tarnel::site::id(i), tarnel::site::name(QStringLiteral("Site %1").arg(i)),
                             tarnel::site::devices({device})});
        }
        for (int i = 1; i <= lastEvent; ++i)
            events.push_back({tarnel::event::id(i), tarnel::event::time(i), tarnel::event::deviceId(i % 5000 + 1),
                              tarnel::event::sectionId(1)});
        m_cache.load<tarnel::Site>(sites).value();
        m_cache.load<tarnel::Event>(events, {1000, tell}).value();
    }

    void stop() { m_cache.stop(); }

    QVector<Row> last()
    {
        QVector<Row> rows;
        for (const tarnel::Event &event : m_cache.events(lastEvent - 99, lastEvent).value()) {
            const auto site = static_cast<unsigned int>(tarnel::value(event.deviceId).value_or(0));
            const auto name = m_cache.siteNameAndAddress(site).value().name.value_or(u"");
            rows.prepend({event.id, site, tarnel::qstring(name), tarnel::qstring(event.sectionName)});
        }
        return rows;
    }

    void rename(unsigned int site, const QString &name)
    {
        m_cache.update<tarnel::Site>({tarnel::site::id(site), tarnel::site::name(name)}).value();
    }

private:
    tarnel::Cache m_cache;
};

class Window : public QWidget
{
public:
    /// Called when all that was asked for is there to be seen.
    std::function<void()> onSettled = [] {};

    Window()
    {
        m_rows.setHorizontalHeaderLabels({"Event", "Site", "Section"});
        m_found.setSourceModel(&m_rows);
        m_found.setFilterKeyColumn(-1); // Any of them.
        m_found.setFilterCaseSensitivity(Qt::CaseInsensitive);
        view->setModel(&m_found);
        view->setSelectionBehavior(QAbstractItemView::SelectRows);
        view->setEditTriggers(QAbstractItemView::NoEditTriggers);
        view->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
        search->setPlaceholderText("Search");
        name->setPlaceholderText("Another name for the selected site");

        auto *buttons = new QHBoxLayout;
        for (QWidget *widget : std::initializer_list<QWidget *>{name, rename, refresh, restart})
            buttons->addWidget(widget);
        auto *layout = new QVBoxLayout(this);
        for (QWidget *widget : std::initializer_list<QWidget *>{search, view})
            layout->addWidget(widget);
        layout->addLayout(buttons);
        layout->addWidget(m_status);

        connect(search, &QLineEdit::textChanged, &m_found, &QSortFilterProxyModel::setFilterFixedString);
        connect(refresh, &QPushButton::clicked, this, [this] { showAfter([] {}); });
        connect(rename, &QPushButton::clicked, this, [this] {
            const auto site = view->currentIndex().siblingAtColumn(1).data(Qt::UserRole).toUInt();
            if (site != 0)
                showAfter([this, site, text = name->text()] { m_history.rename(site, text); });
        });
        connect(restart, &QPushButton::clicked, this, [this] {
            showAfter([this] {
                m_history.stop();
                start();
            });
        });

        m_worker.setMaxThreadCount(1); // What is asked for is done in its order.
        resize(700, 600);
        showAfter([this] { start(); });
    }

    ~Window() override { m_isClosing = true; }

    QTableView *view = new QTableView;
    QLineEdit *search = new QLineEdit;
    QLineEdit *name = new QLineEdit;
    QPushButton *rename = new QPushButton("Rename");
    QPushButton *refresh = new QPushButton("Refresh");
    QPushButton *restart = new QPushButton("Restart");

protected:
    /// The cache is stopped first, and the window goes when that is done.
    void closeEvent(QCloseEvent *event) override
    {
        event->setAccepted(m_isStopped);
        if (m_isClosing.exchange(true))
            return;
        m_status->setText("Stopping...");
        m_worker.start([this] {
            m_history.stop();
            onWindow([this] {
                m_isStopped = true;
                close();
            });
        });
    }

private:
    /// Has something done on the window's thread; nothing, if the window has gone.
    template <class Action>
    void onWindow(Action action)
    {
        QMetaObject::invokeMethod(this, std::move(action), Qt::QueuedConnection);
    }

    /// On the worker's thread.
    void start()
    {
        m_history.start([this](std::size_t stored) {
            onWindow([this, stored] { m_status->setText(QStringLiteral("%1 events").arg(stored)); });
            return !m_isClosing;
        });
    }

    /// Does something on the worker's thread, and shows the last events as they are then, or why there are none.
    template <class Action>
    void showAfter(Action action)
    {
        m_status->setText("Working...");
        m_worker.start([this, action] {
            try {
                action();
                onWindow([this, rows = m_history.last()] { show(rows); });
            } catch (const tarnel::Error &error) {
                onWindow([this, text = QString::fromUtf8(error.what())] { m_status->setText(text); });
            }
            onWindow([this] { onSettled(); });
        });
    }

    void show(const QVector<Row> &rows)
    {
        m_rows.setRowCount(0);
        for (const Row &row : rows) {
            m_rows.appendRow({new QStandardItem(QString::number(row.event)), new QStandardItem(row.siteName),
                              new QStandardItem(row.section)});
            m_rows.item(m_rows.rowCount() - 1, 1)->setData(row.site, Qt::UserRole);
        }
        m_status->setText(QStringLiteral("The last %1 events").arg(rows.size()));
    }

    QLabel *m_status = new QLabel;
    QStandardItemModel m_rows;
    QSortFilterProxyModel m_found;
    bool m_isStopped = false;
    std::atomic<bool> m_isClosing = false;
    History m_history;
    QThreadPool m_worker; ///< Its end waits for what is being done.
};

/// Uses the window as a person would: one step each time that it has settled.
class Rehearsal
{
public:
    explicit Rehearsal(Window &window) : m_window(window)
    {
        window.onSettled = [this] { (this->*m_steps[m_next++])(); };
    }

    [[nodiscard]] bool isDone() const { return m_next == m_steps.size(); }

private:
    void findAndRename()
    {
        print();
        m_window.search->setText("49901");
        m_window.view->selectRow(0);
        m_window.name->setText(QString::fromUtf8("Südtor"));
        if (m_window.view->currentIndex().isValid())
            m_window.rename->click();
        else
            m_window.close();
    }
    void restart()
    {
        m_window.search->setText("SÜD");
        print();
        m_window.restart->click();
    }
    void close()
    {
        print();
        m_window.close();
    }

    void print() const
    {
        const QAbstractItemModel &rows = *m_window.view->model();
        QTextStream out(stdout);
        out.setCodec("UTF-8");
        out << rows.rowCount() << " rows\n";
        for (int i = 0; i < rows.rowCount(); ++i)
            out << "event " << rows.index(i, 0).data().toString() << ": " << rows.index(i, 1).data().toString() << ", "
                << rows.index(i, 2).data().toString() << '\n';
    }

    using Step = void (Rehearsal::*)();
    static constexpr std::array<Step, 3> m_steps{&Rehearsal::findAndRename, &Rehearsal::restart, &Rehearsal::close};
    Window &m_window;
    std::size_t m_next = 0;
};

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv); // Before the cache's start, and until after its stop.
    Window window;
    std::optional<Rehearsal> rehearsal;
    if (QApplication::arguments().contains("--try"))
        rehearsal.emplace(window);
    window.QWidget::show();
    const int code = QApplication::exec();
    return rehearsal && !rehearsal->isDone() ? 1 : code;
}
