#include "questionanswerer.h"
#include "roadconfigwidget.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QJsonArray>
#include <QJsonDocument>
#include <QPushButton>
#include <QToolButton>
#include <QtTest>

#include <limits>
#include <memory>

namespace {

QJsonObject json(const char* text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text);
    if (document.isNull())
        qFatal("bad test JSON: %s", text);
    return document.object();
}

QString number(const QJsonValue& value)
{
    return value.isDouble() ? QString::number(value.toDouble()) : "?";
}

// The configuration the editor writes, in one line: "@offset lowest..highest: widths |
// sections", a lane's width marked "*", a curve's length followed by "~" and its signed
// radius.
QString describe(const QJsonObject& config)
{
    const QJsonObject parts = config.value("parts").toObject();
    QList<int> numbers;
    for (const QString& key : parts.keys())
        numbers << key.toInt();
    std::sort(numbers.begin(), numbers.end());
    QString text = QString("@%1 %2..%3:")
                       .arg(number(config.value("origin_offset")))
                       .arg(numbers.value(0))
                       .arg(numbers.value(numbers.size() - 1));
    for (int n : qAsConst(numbers)) {
        const QJsonObject part = parts.value(QString::number(n)).toObject();
        text += " " + number(part.value("width")) + (part.value("is_lane").toBool() ? "*" : "");
    }
    text += " |";
    for (const QJsonValue& value : config.value("sections").toArray()) {
        const QJsonObject section = value.toObject();
        const double radius = section.value("radius").toDouble();
        text += " " + number(section.value("length"));
        if (section.value("is_curved").toBool())
            text += "~" + number(section.value("radius"));
        else if (radius != 0)
            text += "!"; // a straight with a radius
    }
    return text;
}

} // namespace

class tst_RoadConfigWidget : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void loadAndApply_data();
    void loadAndApply();
    void edits_data();
    void edits();
    void closeQuestion();

private:
    QJsonObject apply();
    void click(const QString& name, int times = 1);
    template<typename T = QDoubleSpinBox> T* field(const QString& name) const
    {
        return m_widget->findChild<T*>(name);
    }

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
    field<QDialogButtonBox>("roadConfigButtonBox")->button(QDialogButtonBox::Apply)->click();
    // Anything but exactly one emission yields an empty object, which no expectation matches.
    return spy.count() == 1 ? spy.first().first().toJsonObject() : QJsonObject();
}

void tst_RoadConfigWidget::click(const QString& name, int times)
{
    for (int i = 0; i < times; ++i)
        field<QToolButton>(name + "Button")->click();
}

void tst_RoadConfigWidget::loadAndApply_data()
{
    QTest::addColumn<QJsonObject>("config");
    QTest::addColumn<QString>("written"); // empty: the configuration itself

    QTest::newRow("two right and three left lanes, every kind of section")
        << json(R"({"origin_offset": -12.5, "parts": {"-3": {"width": 1.5, "is_lane": false},
            "-2": {"width": 3.75, "is_lane": true}, "-1": {"width": 3.5, "is_lane": true},
            "0": {"width": 2.25, "is_lane": false}, "1": {"width": 3.0, "is_lane": true},
            "2": {"width": 3.1, "is_lane": true}, "3": {"width": 3.2, "is_lane": true},
            "4": {"width": 0.0, "is_lane": false}},
            "sections": [{"is_curved": false, "radius": 0, "length": 120.5},
                         {"is_curved": true, "radius": 350, "length": 80},
                         {"is_curved": true, "radius": -45.25, "length": 30}]})")
        << QString();
    QTest::newRow("empty object shows the defaults") << QJsonObject() << "@0 -1..1: 2 0 2 | 100";
    QTest::newRow("wrong types at the top take the defaults")
        << json(R"({"origin_offset": "far", "parts": [1, 2], "sections": {"a": 1}})")
        << "@0 -1..1: 2 0 2 | 100";
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    QTest::newRow("wrong types, NaN and infinities inside take the defaults")
        << QJsonObject{{"origin_offset", nan},
                       {"parts", QJsonObject{{"1", json(R"({"width": "wide", "is_lane": true})")},
                                             {"0", json(R"({"width": null})")},
                                             {"-1", QJsonObject{{"width", inf}, {"is_lane", 1}}}}},
                       {"sections",
                        QJsonArray{
                            QJsonObject{{"is_curved", true}, {"radius", -inf}, {"length", nan}},
                            json(R"({"is_curved": 1, "radius": "r"})")}}}
        << "@0 -1..2: 2 0 3.5* 2 | 100~-10 100";
    QTest::newRow("values outside the fields' ranges are clamped")
        << json(R"({"origin_offset": -80,
                    "parts": {"-2": {"width": -3}, "-1": {"width": -1, "is_lane": true},
                              "0": {"width": -5}, "1": {"width": 22, "is_lane": true}},
                    "sections": [{"length": -10}, {"is_curved": true, "radius": 5, "length": 999},
                                 {"is_curved": true, "radius": -1e9, "length": 0}]})")
        << "@-50 -2..2: 0 0* 0 10* 2 | 0.1 500~10 0.1~-10000";
    QTest::newRow("keys that are no numbers and elements that are no objects are passed over")
        << json(R"({"parts": {"abc": {"width": 9, "is_lane": true}, "1.5": {"width": 9},
                    "": {"width": 9}, "3": 7, "-3": {}, "1": {"width": 3, "is_lane": true},
                    "2": {"width": 1}, "2147483647": {"width": 4},
                    "-2147483648": {"width": 3.25, "is_lane": true}},
                    "sections": [5, "x", null, [], {"is_curved": true, "radius": -200,
                                                    "length": 60}, true]})")
        << "@0 -2..2: 2 3.25* 0 3* 4 | 60~-200";

    // Twelve left lanes and a roadside beyond them, twenty-five sections: the first ten
    // lanes and twenty sections are kept.
    QJsonObject parts{{"13", QJsonObject{{"width", 1.25}}}};
    QJsonArray sections;
    QString lanes, lengths;
    for (int n = 1; n <= 25; ++n) {
        if (n <= 12)
            parts.insert(QString::number(n), QJsonObject{{"width", 0.25 * n}, {"is_lane", true}});
        lanes += n <= 10 ? QString(" %1*").arg(0.25 * n) : QString();
        lengths += n <= 20 ? QString(" %1").arg(n) : QString();
        sections.append(QJsonObject{{"length", n}});
    }
    QTest::newRow("more lanes and sections than rows are cut")
        << QJsonObject{{"parts", parts}, {"sections", sections}}
        << "@0 -1..11: 2 0" + lanes + " 1.25 |" + lengths;
}

void tst_RoadConfigWidget::loadAndApply()
{
    QFETCH(QJsonObject, config);
    QFETCH(QString, written);
    // A busy road first: nothing of it may survive into rows the next object leaves out.
    m_widget->setRoadConfig(json(R"({"origin_offset": 7, "parts": {"-2": {"width": 5},
        "-1": {"width": 5, "is_lane": true}, "0": {"width": 5},
        "1": {"width": 5, "is_lane": true}, "2": {"width": 5}},
        "sections": [{"is_curved": true, "radius": 500, "length": 5},
                     {"is_curved": true, "radius": -500, "length": 5}]})"));
    m_widget->setRoadConfig(config);
    if (written.isEmpty())
        QCOMPARE(apply(), config);
    else
        QCOMPARE(describe(apply()), written);
}

void tst_RoadConfigWidget::edits_data()
{
    QTest::addColumn<QStringList>("edits"); // buttons clicked, "field=value" set
    QTest::addColumn<QString>("written");
    QTest::addColumn<QString>("disabled"); // the buttons greyed out

    auto times = [](const QString& button, int n) {
        QStringList edits;
        while (n-- > 0)
            edits << button;
        return edits;
    };
    QTest::newRow("fresh: nothing to remove") << QStringList() << "@0 -1..1: 2 0 2 | 100"
                                              << "removeLeftLane removeRightLane removeSection";
    // Parts are numbered outwards from the median strip (0), the roadsides outermost.
    QTest::newRow("three left lanes, two right, two sections")
        << times("appendLeftLane", 3) + times("appendRightLane", 2) + times("appendSection", 1)
        << "@0 -3..4: 2 3.5* 3.5* 0 3.5* 3.5* 3.5* 2 | 100 100"
        << "";
    QTest::newRow("removed back to none")
        << times("appendRightLane", 3) + times("removeRightLane", 4) + times("removeSection", 1)
        << "@0 -1..1: 2 0 2 | 100"
        << "removeLeftLane removeRightLane removeSection";
    QTest::newRow("ten lanes a side and twenty sections: no more")
        << times("appendLeftLane", 11) + times("appendRightLane", 11) + times("appendSection", 20)
        << "@0 -11..11: 2" + QString(" 3.5*").repeated(10) + " 0" + QString(" 3.5*").repeated(10)
               + " 2 |" + QString(" 100").repeated(20)
        << "appendLeftLane appendRightLane appendSection";
    QTest::newRow("removed rows keep their values")
        << times("appendRightLane", 2) + times("appendSection", 1)
               + QStringList{"rightLaneWidthSpin2=4.25", "sectionKindCombo2=right curve",
                             "sectionLengthSpin2=77", "originOffsetSpin=-3"}
               + QStringList{"removeRightLane", "removeSection", "appendRightLane", "appendSection"}
        << "@-3 -3..1: 2 4.25* 3.5* 0 2 | 100 77~-100"
        << "removeLeftLane";
    QTest::newRow("left curve writes the radius as it is")
        << QStringList{"sectionKindCombo1=left curve", "sectionRadiusSpin1=250"}
        << "@0 -1..1: 2 0 2 | 100~250"
        << "removeLeftLane removeRightLane removeSection";
    QTest::newRow("a straight again writes no radius")
        << QStringList{"sectionKindCombo1=right curve", "sectionRadiusSpin1=250",
                       "sectionKindCombo1=straight", "medianStripWidthSpin=1.5"}
        << "@0 -1..1: 2 1.5 2 | 100"
        << "removeLeftLane removeRightLane removeSection";
}

void tst_RoadConfigWidget::edits()
{
    QFETCH(QStringList, edits);
    QFETCH(QString, written);
    QFETCH(QString, disabled);
    for (const QString& edit : qAsConst(edits)) {
        const QString name = edit.section('=', 0, 0);
        const QString value = edit.section('=', 1);
        if (auto* combo = field<QComboBox>(name))
            combo->setCurrentIndex(combo->findText(value));
        else if (value.isEmpty())
            click(name);
        else
            field(name)->setValue(value.toDouble());
    }
    for (const QString name : {"appendLeftLane", "removeLeftLane", "appendRightLane",
                               "removeRightLane", "appendSection", "removeSection"})
        QCOMPARE(field<QToolButton>(name + "Button")->isEnabled(), !disabled.contains(name));
    const QJsonObject config = apply();
    QCOMPARE(describe(config), written);
    // Exactly the rows written are shown; a straight's radius field is greyed out.
    int lowest = 0;
    int highest = 0;
    for (const QString& key : config.value("parts").toObject().keys()) {
        lowest = qMin(lowest, key.toInt());
        highest = qMax(highest, key.toInt());
    }
    const int sections = config.value("sections").toArray().size();
    for (int row = 1; row <= 20; ++row) {
        const QString n = QString::number(row);
        QCOMPARE(field("sectionLengthSpin" + n)->isHidden(), row > sections);
        QCOMPARE(field("sectionRadiusSpin" + n)->isEnabled(),
                 field<QComboBox>("sectionKindCombo" + n)->currentIndex() != 0);
        if (row <= 10) {
            QCOMPARE(field("leftLaneWidthSpin" + n)->isHidden(), row >= highest);
            QCOMPARE(field("rightLaneWidthSpin" + n)->isHidden(), row >= -lowest);
        }
    }
}

void tst_RoadConfigWidget::closeQuestion()
{
    m_widget->setRoadConfig(json(R"({"sections": [{"length": 10}, {"length": 20}]})"));
    QSignalSpy aboutToClose(m_widget.get(), &StandaloneWidget::aboutToClose);
    // Closes with the Close button or the title bar's; a question answered with the
    // given button, if asked, decides.
    const auto close = [this, &aboutToClose](bool asked, QMessageBox::StandardButton answer,
                                             bool viaTitleBar = false) {
        aboutToClose.clear();
        QuestionAnswerer answerer(answer);
        if (viaTitleBar)
            m_widget->close();
        else
            field<QDialogButtonBox>("roadConfigButtonBox")
                ->button(QDialogButtonBox::Close)
                ->click();
        const bool closed = !asked || answer == QMessageBox::Yes;
        QCOMPARE(answerer.count, asked ? 1 : 0);
        if (asked)
            QCOMPARE(answerer.text, QString("All unsaved data will be lost. Continue?"));
        QCOMPARE(m_widget->isVisible(), !closed);
        QCOMPARE(aboutToClose.count(), closed ? 1 : 0);
        QCOMPARE(m_widget->isConfigChanged(), !closed);
        m_widget->show();
    };
    close(false, QMessageBox::No); // nothing changed: closes at once
    m_widget->setRoadConfig(json(R"({"origin_offset": 5})"));
    close(false, QMessageBox::No); // a loaded road is no edit
    m_widget->setRoadConfig(json(R"({"sections": [{"length": 10}, {"length": 20}]})"));
    field("medianStripWidthSpin")->setValue(3.0);
    const QJsonObject widened = apply();
    close(false, QMessageBox::No); // an applied edit closes at once
    // Yes drops an edit: the rows show the applied road again. No keeps it in the rows.
    field("medianStripWidthSpin")->setValue(4.0);
    close(true, QMessageBox::Yes);
    QCOMPARE(apply(), widened);
    click("appendLeftLane");
    close(true, QMessageBox::No);
    const QJsonObject withLane = apply();
    QVERIFY(withLane != widened);
    field("sectionLengthSpin2")->setValue(30.0);
    close(true, QMessageBox::Yes);
    QCOMPARE(apply(), withLane);
    field<QComboBox>("sectionKindCombo2")->setCurrentIndex(1);
    close(true, QMessageBox::No, true); // the title bar asks too
}

QTEST_MAIN(tst_RoadConfigWidget)
#include "tst_roadconfigwidget.moc"
