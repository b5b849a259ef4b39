// Needs no device: a count through the table that a camera without files has. Uses Qt itself, as
// hosts do.
#include <irmcore/fpga.h>

#include <cstdio>

int main() {
    IRPara table;
    const IrTempStru reading = table.calTemp(0x9000);
    std::puts(qPrintable(QString::number(static_cast<double>(reading.temp), 'f', 4)));
}
