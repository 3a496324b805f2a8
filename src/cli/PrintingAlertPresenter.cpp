#include "PrintingAlertPresenter.h"

void PrintingAlertPresenter::presentAlert(const Alert &alert, std::function<void(int response)> completion)
{
    ++m_alertCount;
    m_err << "tessary-cli: " << alert.messageText;
    if (!alert.informativeText.isEmpty())
        m_err << ' ' << alert.informativeText;
    m_err << Qt::endl;
    if (completion)
        completion(DefaultButton);
}
