#include "questionanswerer.h"
#include "roadconfigwidget.h"

#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMessageBox>
#include <QPushButton>
#include <QToolButton>
#include <QtTest>

#include <limits>
#include <memory>

namespace {

QJsonValue json(const char* text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text);
    if (document.isNull())
        qFatal("bad test JSON: %s", text);
    return document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
}

// A road configuration as the editor writes it.
QJsonObject road(const char* parts, const char* sections, double offset = 0.0)
{
    return {{"origin_offset", offset}, {"parts", json(parts)}, {"sections", json(sections)}};
}

// Median strip and roadsides at their defaults, no lanes; one default section.
const char* const NoLanes = R"({"-1": {"width": 2, "is_lane": false},
    "0": {"width": 0, "is_lane": false}, "1": {"width": 2, "is_lane": false}})";
const char* const OneStraight = R"([{"is_curved": false, "radius": 0, "length": 100}])";

} // namespace

class tst_RoadConfigWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void partNumbering_data();
    void partNumbering();
    void sectionKinds_data();
    void sectionKinds();
    void roundTrip_data();
    void roundTrip();
    void buttonLimits_data();
    void buttonLimits();
    void removedRowsKeepTheirValues();
    void closeQuestion_data();
    void closeQuestion();
    void hostileConfig_data();
    void hostileConfig();
    void oversizedConfigIsClamped();

private:
    QJsonObject apply();
    void click(const QString& name, int times = 1);
    QDoubleSpinBox* spin(const QString& name) const;
    QComboBox* kindCombo(int section) const;

    std::unique_ptr<RoadConfigWidget> m_widget;
};

void tst_RoadConfigWidget::init()
{
    m_widget = std::make_unique<RoadConfigWidget>();
    m_widget->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_widget.get()));
}

void tst_RoadConfigWidget::cleanup()
{
    m_widget.reset();
}

QJsonObject tst_RoadConfigWidget::apply()
{
    QSignalSpy spy(m_widget.get(), &RoadConfigWidget::roadConfigChanged);
    m_widget->findChild<QDialogButtonBox*>("roadConfigButtonBox")
        ->button(QDialogButtonBox::Apply)
        ->click();
    // Anything but exactly one emission yields an empty object, which no expectation matches.
    return spy.count() == 1 ? spy.first().first().toJsonObject() : QJsonObject();
}

void tst_RoadConfigWidget::click(const QString& name, int times)
{
    auto* button = m_widget->findChild<QToolButton*>(name);
    QVERIFY2(button, qPrintable(name));
    for (int i = 0; i < times; ++i)
        button->click();
}

QDoubleSpinBox* tst_RoadConfigWidget::spin(const QString& name) const
{
    return m_widget->findChild<QDoubleSpinBox*>(name);
}

QComboBox* tst_RoadConfigWidget::kindCombo(int section) const
{
    return m_widget->findChild<QComboBox*>(QString("sectionKindCombo%1").arg(section));
}

void tst_RoadConfigWidget::partNumbering_data()
{
    QTest::addColumn<int>("left");
    QTest::addColumn<int>("right");
    QTest::addColumn<int>("lowest"); // right roadside
    QTest::addColumn<int>("highest"); // left roadside

    QTest::newRow("no lanes: roadsides -1 and 1") << 0 << 0 << -1 << 1;
    QTest::newRow("3 left and 2 right lanes: -3 .. 4") << 3 << 2 << -3 << 4;
    QTest::newRow("left lanes only") << 2 << 0 << -1 << 3;
    QTest::newRow("right lanes only") << 0 << 4 << -5 << 1;
    QTest::newRow("ten lanes on each side") << 10 << 10 << -11 << 11;
}

void tst_RoadConfigWidget::partNumbering()
{
    QFETCH(int, left);
    QFETCH(int, right);
    QFETCH(int, lowest);
    QFETCH(int, highest);

    click("appendLeftLaneButton", left);
    click("appendRightLaneButton", right);
    // A width of its own for every row shows where each row ends up: left lane n is
    // 1.n m wide, right lane n 5.n m, median 7 m, right roadside 8 m, left roadside 9 m.
    for (int lane = 1; lane <= 10; ++lane) {
        spin(QString("leftLaneWidthSpin%1").arg(lane))->setValue(1.0 + 0.1 * lane);
        spin(QString("rightLaneWidthSpin%1").arg(lane))->setValue(5.0 + 0.1 * lane);
    }
    spin("medianStripWidthSpin")->setValue(7.0);
    spin("rightRoadsideWidthSpin")->setValue(8.0);
    spin("leftRoadsideWidthSpin")->setValue(9.0);

    const QJsonObject parts = apply().value("parts").toObject();
    QCOMPARE(parts.size(), highest - lowest + 1);
    for (int number = lowest; number <= highest; ++number) {
        QVERIFY2(parts.contains(QString::number(number)), qPrintable(QString::number(number)));
        const QJsonObject part = parts.value(QString::number(number)).toObject();
        double width = number > 0 ? 1.0 + 0.1 * number : 5.0 - 0.1 * number;
        if (number == 0 || number == lowest || number == highest)
            width = number == 0 ? 7.0 : (number == lowest ? 8.0 : 9.0);
        QCOMPARE(part.value("is_lane").toBool(),
                 number != 0 && number != lowest && number != highest);
        QCOMPARE(part.value("width").toDouble(), width);
    }
}

void tst_RoadConfigWidget::sectionKinds_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<bool>("curved");
    QTest::addColumn<double>("radius");

    QTest::newRow("straight writes radius 0") << 0 << false << 0.0;
    QTest::newRow("left curve writes the radius positive") << 1 << true << 250.0;
    QTest::newRow("right curve writes the radius negative") << 2 << true << -250.0;
}

void tst_RoadConfigWidget::sectionKinds()
{
    QFETCH(int, kind);
    QFETCH(bool, curved);
    QFETCH(double, radius);

    QComboBox* combo = kindCombo(1);
    QCOMPARE(combo->count(), 3);
    combo->setCurrentIndex(combo->findData(kind));
    QCOMPARE(combo->currentText(), (QStringList{"straight", "left curve", "right curve"}[kind]));
    spin("sectionRadiusSpin1")->setValue(250.0);
    spin("sectionLengthSpin1")->setValue(42.5);
    QCOMPARE(spin("sectionRadiusSpin1")->isEnabled(), curved); // a straight has no radius

    const QJsonArray sections = apply().value("sections").toArray();
    QCOMPARE(sections.size(), 1);
    const QJsonObject section = sections.first().toObject();
    QCOMPARE(section.value("is_curved").toBool(), curved);
    QCOMPARE(section.value("radius").toDouble(), radius);
    QCOMPARE(section.value("length").toDouble(), 42.5);
}

void tst_RoadConfigWidget::roundTrip_data()
{
    QTest::addColumn<QJsonObject>("config");

    QTest::newRow("two right and three left lanes, every kind of section") << road(
        R"({"-3": {"width": 1.5, "is_lane": false}, "-2": {"width": 3.75, "is_lane": true},
            "-1": {"width": 3.5, "is_lane": true}, "0": {"width": 2.25, "is_lane": false},
            "1": {"width": 3.0, "is_lane": true}, "2": {"width": 3.1, "is_lane": true},
            "3": {"width": 3.2, "is_lane": true}, "4": {"width": 0.0, "is_lane": false}})",
        R"([{"is_curved": false, "radius": 0, "length": 120.5},
            {"is_curved": true, "radius": 350, "length": 80},
            {"is_curved": true, "radius": -45.25, "length": 30}])",
        -12.5);
    QTest::newRow("no lanes, fields at their limits") << road(
        R"({"-1": {"width": 10, "is_lane": false}, "0": {"width": 0, "is_lane": false},
            "1": {"width": 0, "is_lane": false}})",
        R"([{"is_curved": true, "radius": 10, "length": 0.1},
            {"is_curved": true, "radius": -10000, "length": 500}])",
        50.0);
}

void tst_RoadConfigWidget::roundTrip()
{
    QFETCH(QJsonObject, config);
    m_widget->setRoadConfig(config);
    QCOMPARE(apply(), config);
}

void tst_RoadConfigWidget::buttonLimits_data()
{
    QTest::addColumn<QString>("rows"); // "LeftLane", "RightLane" or "Section"
    QTest::addColumn<int>("appends");
    QTest::addColumn<int>("removes");
    QTest::addColumn<bool>("appendEnabled");
    QTest::addColumn<bool>("removeEnabled");
    QTest::addColumn<int>("count");

    QTest::newRow("no left lane: nothing to remove") << "LeftLane" << 0 << 0 << true << false << 0;
    QTest::newRow("nine left lanes: both ways") << "LeftLane" << 9 << 0 << true << true << 9;
    QTest::newRow("ten left lanes: no more") << "LeftLane" << 10 << 0 << false << true << 10;
    QTest::newRow("right lanes removed to none") << "RightLane" << 3 << 3 << true << false << 0;
    QTest::newRow("ten right lanes: no more") << "RightLane" << 10 << 0 << false << true << 10;
    QTest::newRow("one section cannot be removed") << "Section" << 0 << 0 << true << false << 1;
    QTest::newRow("two sections: both ways") << "Section" << 1 << 0 << true << true << 2;
    QTest::newRow("twenty sections: no more") << "Section" << 19 << 0 << false << true << 20;
}

void tst_RoadConfigWidget::buttonLimits()
{
    QFETCH(QString, rows);
    QFETCH(int, appends);
    QFETCH(int, removes);
    QFETCH(bool, appendEnabled);
    QFETCH(bool, removeEnabled);
    QFETCH(int, count);

    click("append" + rows + "Button", appends);
    click("remove" + rows + "Button", removes);
    QCOMPARE(m_widget->findChild<QToolButton*>("append" + rows + "Button")->isEnabled(),
             appendEnabled);
    QCOMPARE(m_widget->findChild<QToolButton*>("remove" + rows + "Button")->isEnabled(),
             removeEnabled);

    // Exactly the counted rows are shown, the others hidden.
    const QString prefix = rows == "Section"
                               ? "sectionLengthSpin"
                               : (rows == "LeftLane" ? "leftLaneWidthSpin" : "rightLaneWidthSpin");
    for (int row = 1; row <= (rows == "Section" ? 20 : 10); ++row)
        QCOMPARE(spin(prefix + QString::number(row))->isHidden(), row > count);

    const QJsonObject config = apply();
    if (rows == "Section")
        QCOMPARE(config.value("sections").toArray().size(), count);
    else
        QCOMPARE(config.value("parts").toObject().size(), count + 3); // median, two roadsides
}

void tst_RoadConfigWidget::removedRowsKeepTheirValues()
{
    click("appendRightLaneButton", 2);
    click("appendSectionButton");
    spin("rightLaneWidthSpin2")->setValue(4.25);
    kindCombo(2)->setCurrentIndex(kindCombo(2)->findData(RoadConfigWidget::RightCurve));
    spin("sectionLengthSpin2")->setValue(77.0);

    click("removeRightLaneButton");
    click("removeSectionButton");
    QJsonObject config = apply();
    QCOMPARE(config.value("parts").toObject().size(), 4); // one right lane is left
    QCOMPARE(config.value("sections").toArray().size(), 1);

    click("appendRightLaneButton");
    click("appendSectionButton");
    config = apply();
    QCOMPARE(config.value("parts").toObject().value("-2").toObject().value("width").toDouble(),
             4.25);
    const QJsonObject section = config.value("sections").toArray().at(1).toObject();
    QCOMPARE(section.value("radius").toDouble(), -100.0);
    QCOMPARE(section.value("length").toDouble(), 77.0);
}

void tst_RoadConfigWidget::closeQuestion_data()
{
    QTest::addColumn<QString>("edit");
    QTest::addColumn<bool>("viaTitleBar"); // the window's own close, not the Close button
    QTest::addColumn<bool>("answerYes");
    QTest::addColumn<bool>("asked");
    QTest::addColumn<bool>("closed");

    QTest::newRow("nothing changed closes at once") << "none" << false << false << false << true;
    QTest::newRow("loaded road is no edit") << "load" << false << false << false << true;
    QTest::newRow("applied edit closes at once") << "apply" << false << false << false << true;
    QTest::newRow("edited width, Yes drops it") << "width" << false << true << true << true;
    QTest::newRow("appended lane, No keeps it") << "lane" << false << false << true << false;
    QTest::newRow("removed section, Yes drops it") << "section" << false << true << true << true;
    QTest::newRow("changed kind, title bar asks too") << "kind" << true << false << true << false;
}

void tst_RoadConfigWidget::closeQuestion()
{
    QFETCH(QString, edit);
    QFETCH(bool, viaTitleBar);
    QFETCH(bool, answerYes);
    QFETCH(bool, asked);
    QFETCH(bool, closed);

    m_widget->setRoadConfig(road(NoLanes, R"([{"length": 10}, {"length": 20}])"));
    const QJsonObject before = apply();
    if (edit == "load")
        m_widget->setRoadConfig(road(NoLanes, OneStraight, 5.0));
    else if (edit == "apply" || edit == "width")
        spin("medianStripWidthSpin")->setValue(3.0);
    else if (edit == "lane")
        click("appendLeftLaneButton");
    else if (edit == "section")
        click("removeSectionButton");
    else if (edit == "kind")
        kindCombo(2)->setCurrentIndex(1);
    if (edit == "apply")
        apply();

    QSignalSpy aboutToClose(m_widget.get(), &StandaloneWidget::aboutToClose);
    QuestionAnswerer answerer(answerYes ? QMessageBox::Yes : QMessageBox::No);
    if (viaTitleBar)
        m_widget->close();
    else
        m_widget->findChild<QDialogButtonBox*>("roadConfigButtonBox")
            ->button(QDialogButtonBox::Close)
            ->click();

    QCOMPARE(answerer.count, asked ? 1 : 0);
    if (asked) {
        QCOMPARE(answerer.title, QString("Warning"));
        QCOMPARE(answerer.text, QString("All unsaved data will be lost. Continue?"));
    }
    QCOMPARE(m_widget->isVisible(), !closed);
    QCOMPARE(aboutToClose.count(), closed ? 1 : 0);
    QCOMPARE(m_widget->isConfigChanged(), !closed);
    // No keeps the edit in the rows; Yes drops it and the rows show the applied road again.
    if (asked)
        QCOMPARE(apply() == before, closed);
}

void tst_RoadConfigWidget::hostileConfig_data()
{
    QTest::addColumn<QJsonObject>("config");
    QTest::addColumn<QJsonObject>("expected");

    const QJsonObject defaults = road(NoLanes, OneStraight);
    QTest::newRow("wrong types at the top take the defaults")
        << json(R"({"origin_offset": "far", "parts": [1, 2], "sections": {"a": 1}})").toObject()
        << defaults;
    QTest::newRow("empty object shows the defaults") << QJsonObject() << defaults;
    QTest::newRow("wrong types inside parts and sections take the defaults")
        << json(R"({"parts": {"1": {"width": "wide", "is_lane": "yes"}, "0": {"width": null}},
                    "sections": [{"is_curved": 1, "radius": "r", "length": null}]})")
               .toObject()
        << defaults;
    QTest::newRow("values outside the fields' ranges are clamped")
        << json(R"({"origin_offset": -80,
                    "parts": {"-2": {"width": -3}, "-1": {"width": -1, "is_lane": true},
                              "0": {"width": -5}, "1": {"width": 22, "is_lane": true}},
                    "sections": [{"length": -10}, {"is_curved": true, "radius": 5, "length": 999},
                                 {"is_curved": true, "radius": -1e9, "length": 0},
                                 {"is_curved": true, "length": 50}]})")
               .toObject()
        << road(R"({"-2": {"width": 0, "is_lane": false}, "-1": {"width": 0, "is_lane": true},
                    "0": {"width": 0, "is_lane": false}, "1": {"width": 10, "is_lane": true},
                    "2": {"width": 2, "is_lane": false}})",
                R"([{"is_curved": false, "radius": 0, "length": 0.1},
                    {"is_curved": true, "radius": 10, "length": 500},
                    {"is_curved": true, "radius": -10000, "length": 0.1},
                    {"is_curved": true, "radius": -10, "length": 50}])",
                -50.0);
    QTest::newRow("part keys that are no numbers and parts that are no objects are ignored")
        << json(R"({"parts": {"abc": {"width": 9, "is_lane": true}, "1.5": {"width": 9},
                    "": {"width": 9}, "3": 7, "-3": {}, "1": {"width": 3, "is_lane": true},
                    "2": {"width": 1}, "2147483647": {"width": 4},
                    "-2147483648": {"width": 3.25, "is_lane": true}}})")
               .toObject()
        << road(R"({"-2": {"width": 2, "is_lane": false}, "-1": {"width": 3.25, "is_lane": true},
                    "0": {"width": 0, "is_lane": false}, "1": {"width": 3, "is_lane": true},
                    "2": {"width": 4, "is_lane": false}})",
                OneStraight);
    QTest::newRow("section elements that are no objects are skipped")
        << json(R"({"sections": [5, "x", null, [], {"is_curved": true, "radius": -200,
                                                    "length": 60}, true]})")
               .toObject()
        << road(NoLanes, R"([{"is_curved": true, "radius": -200, "length": 60}])");

    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    QTest::newRow("NaN and infinities take the defaults")
        << QJsonObject{{"origin_offset", nan},
                       {"parts",
                        QJsonObject{{"0", QJsonObject{{"width", inf}}},
                                    {"1", QJsonObject{{"width", nan}, {"is_lane", true}}}}},
                       {"sections", QJsonArray{QJsonObject{
                                        {"is_curved", true}, {"radius", -inf}, {"length", nan}}}}}
        << road(R"({"-1": {"width": 2, "is_lane": false}, "0": {"width": 0, "is_lane": false},
                    "1": {"width": 3.5, "is_lane": true}, "2": {"width": 2, "is_lane": false}})",
                R"([{"is_curved": true, "radius": -10, "length": 100}])");
}

void tst_RoadConfigWidget::hostileConfig()
{
    QFETCH(QJsonObject, config);
    QFETCH(QJsonObject, expected);

    // A busy road first: nothing of it may survive into rows the next object leaves out.
    QJsonObject busy = road(R"({"-2": {"width": 5}, "-1": {"width": 5, "is_lane": true},
                                "0": {"width": 5}, "1": {"width": 5, "is_lane": true},
                                "2": {"width": 5}})",
                            R"([{"is_curved": true, "radius": 500, "length": 5},
                                {"is_curved": true, "radius": -500, "length": 5}])",
                            7.0);
    m_widget->setRoadConfig(busy);
    m_widget->setRoadConfig(config);
    QCOMPARE(apply(), expected);
}

void tst_RoadConfigWidget::oversizedConfigIsClamped()
{
    // Twelve left lanes and a roadside beyond them; twenty-five sections.
    QJsonObject parts;
    for (int lane = 1; lane <= 12; ++lane)
        parts.insert(QString::number(lane), QJsonObject{{"width", 0.5 * lane}, {"is_lane", true}});
    parts.insert("13", QJsonObject{{"width", 1.25}, {"is_lane", false}});
    QJsonArray sections;
    for (int i = 1; i <= 25; ++i)
        sections.append(QJsonObject{{"length", double(i)}});
    m_widget->setRoadConfig(QJsonObject{{"parts", parts}, {"sections", sections}});

    QVERIFY(!m_widget->findChild<QToolButton*>("appendLeftLaneButton")->isEnabled());
    QVERIFY(!m_widget->findChild<QToolButton*>("appendSectionButton")->isEnabled());
    const QJsonObject config = apply();
    const QJsonObject written = config.value("parts").toObject();
    QCOMPARE(written.size(), 13); // right roadside, median, the ten inner lanes, left roadside
    for (int lane = 1; lane <= 10; ++lane)
        QCOMPARE(written.value(QString::number(lane)).toObject().value("width").toDouble(),
                 0.5 * lane);
    QCOMPARE(written.value("11").toObject().value("width").toDouble(), 1.25);
    const QJsonArray kept = config.value("sections").toArray();
    QCOMPARE(kept.size(), 20);
    for (int i = 0; i < kept.size(); ++i)
        QCOMPARE(kept.at(i).toObject().value("length").toDouble(), i + 1.0);
}

QTEST_MAIN(tst_RoadConfigWidget)
#include "tst_roadconfigwidget.moc"
