#pragma once

#include "calib/modify.h"
#include "core/fpga.h"

#include <QSettings>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <unistd.h>

/// What the benchmarks measure against.
namespace irmbench {

/// The façade with its configuration files read word for word: the text of every key is made when
/// it is looked up, every look-up asks QSettings, and a table file is opened once to see whether it
/// is a table and once to read it. The yardstick for the library's own reading, with the same
/// results, for files that the library takes, and the same printed text (but for the source's name
/// and lines).
class LiteralConfig : public FPGA {
public:
    using FPGA::m_irPara, FPGA::m_modifyShutterTemp, FPGA::m_tempInfoTab, FPGA::m_tempRange;

    void updateModify(int len, int temp) {
        m_minModifyTemp = 79.0F;
        m_maxModifyTemp = -20.0F;
        char name[64] = {};
        if (len != 0)
            std::snprintf(name, sizeof name, "Parameter/Modify_%d_Temp_%d", len, temp);
        else if (temp != 0)
            std::snprintf(name, sizeof name, "Parameter/Modify_Temp_%d", temp);
        if (name[0] == '\0' || ::access(name, F_OK) != 0)
            std::snprintf(name, sizeof name, "Parameter/Modify");
        std::printf("update modify filename:%s len:%d\n", name, len);
        const QSettings settings(QString::fromUtf8(name), QSettings::NativeFormat);
        for (int k = 0; k < 200; ++k) {
            const double celsius = k * 0.5 - 20.0;
            const QString key = modifyKey(celsius);
            const bool given = !settings.value(key).isNull();
            const auto factor = number(settings.value(key, 0));
            s_modify[k] = 0.0F;
            if (!given || factor == 0.0F)
                continue;
            const auto temperature = static_cast<float>(celsius);
            if (temperature <= m_minModifyTemp)
                m_minModifyTemp = temperature;
            if (temperature >= m_maxModifyTemp)
                m_maxModifyTemp = temperature;
            s_modify[k] = factor;
        }
        const double lowest = static_cast<double>(m_minModifyTemp);
        const double highest = static_cast<double>(m_maxModifyTemp);
        const float minModify = number(settings.value(modifyKey(lowest), "1"));
        const float maxModify = number(settings.value(modifyKey(highest), "1"));
        std::printf("minTemp:%f modify:%f  maxTemp:%f modify:%f \n", lowest,
                    static_cast<double>(minModify), highest, static_cast<double>(maxModify));
        for (int k = 0; k < 200; ++k) {
            if (s_modify[k] != 0.0F)
                continue;
            const double celsius = k * 0.5 - 20.0;
            if (celsius < lowest) {
                s_modify[k] = minModify;
            } else if (celsius > highest) {
                s_modify[k] = maxModify;
            } else {
                for (int below = k - 1; below >= 0 && s_modify[k] == 0.0F; --below)
                    s_modify[k] = s_modify[below];
            }
        }
    }

    static void readTable(const char* fileName, TempInfoTab* tab) {
        QSettings settings(QString::fromUtf8(fileName), QSettings::NativeFormat);
        settings.beginGroup("ParaSet");
        tab->maxAD = hexadecimal(settings.value("MaxAD", "0xFFFF"));
        tab->minAD = hexadecimal(settings.value("MinAD", "0"));
        tab->baseTemp = static_cast<short>(settings.value("BaseTemp", 30).toInt());
        const int minTemp = settings.value("MinTemp", 0).toInt();
        const int maxTemp = settings.value("MaxTemp", 0).toInt();
        const int tempNum = std::clamp(settings.value("TempNum", 0).toInt(), 0, 60);
        tab->tempNum = static_cast<unsigned short>(tempNum);
        settings.endGroup();
        settings.beginGroup("Temp2AD");
        if (tempNum > 0 && minTemp <= maxTemp) {
            int n = 0;
            // In 64 bits, as a step beyond the last int is no number.
            for (long long t = minTemp; n < tempNum && t <= maxTemp; t += 10) {
                const QString key = QString("%1").arg(t);
                if (settings.value(key).isNull())
                    continue;
                tab->temp[n] = static_cast<short>(t);
                tab->ad[n] = hexadecimal(settings.value(key));
                ++n;
            }
        }
        settings.endGroup();
    }

    void setSystemAdToTempTab(int lens, int range) {
        updateModify(lens, range);
        m_tempInfoTab = TempInfoTab{};
        char path[50] = {};
        std::snprintf(path, sizeof path, "etc/calc_len%d_temp%d.conf", lens, range);
        if (::access(path, F_OK) != 0) {
            std::printf("[%s, %d] %s is no exist\n", __FILE__, __LINE__, path);
            std::printf("[%s, %d] Set all AD table failured\n", __FILE__, __LINE__);
            std::snprintf(path, sizeof path, "etc/calc_len%d_temp%d_default.conf", lens, range);
        } else {
            QSettings settings(QString::fromUtf8(path), QSettings::NativeFormat);
            settings.beginGroup("Temp2AD");
            if (settings.allKeys().size() < 2)
                std::snprintf(path, sizeof path, "etc/calc_len%d_temp%d_default.conf", lens, range);
            settings.endGroup();
        }
        std::printf("[==================%s, %d] %s\n", __FILE__, __LINE__, path);
        readTable(path, &m_tempInfoTab);
        m_irPara.setADToTempTab(m_tempInfoTab);
        std::printf("[%s, %d] Set all AD table successed\n", __FILE__, __LINE__);
        updateLimits(range);
    }

    void updateShutterTemp(bool) {
        float shutter = 0.0F;
        float sensor = 0.0F;
        fpga_read_shutterTemp(&shutter);
        fpga_read_sensorTemp(&sensor);
        setShutterTemp(shutter);
        const float inside = (shutter + sensor) * 0.5F;
        setSystemAdToTempTab(m_lenIndex, m_tempRange);
        TempInfoTab& tab = m_tempInfoTab;
        for (int i = 0; i < tab.tempNum; ++i)
            if (tab.temp[i] != 30)
                tab.ad[i] = BiaoDingXiuzhengGet(sensor, shutter, inside, tab.temp[i], tab.ad[i]);
        tab.minAD = BiaoDingXiuzhengGet(sensor, shutter, inside, tab.temp[0], tab.ad[0]);
        m_irPara.setADToTempTab(tab);
        m_modifyValue = s_modify[irmcore::modifyEntry(inside)];
        m_modifyShutterTemp = m_modifyValue * inside;
        if (getFreezeImageStatus())
            return;
        m_irPara.setShutterTemp(m_modifyShutterTemp);
        updateLimits(m_tempRange);
    }

private:
    static QString modifyKey(double celsius) {
        const bool half = static_cast<int>(celsius + celsius) % 2 != 0;
        return QString("Averg_%1").arg(celsius, 0, 'f', half ? 1 : 0);
    }
    static float number(const QVariant& value) {
        const double read = value.toDouble();
        return std::isnan(read) ? 0.0F : static_cast<float>(read);
    }
    static unsigned short hexadecimal(const QVariant& value) {
        return static_cast<unsigned short>(value.toString().toInt(nullptr, 16) & 0xFFFF);
    }
    void updateLimits(int range) {
        m_levelSpanMaxAD = m_sysTempHandler->irTemp2AD(range == 0 ? 150.0F : 400.0F).ad;
        m_levelSpanMinAD = m_sysTempHandler->irTemp2AD(range == 0 ? -20.0F : 0.0F).ad;
    }
};

} // namespace irmbench
