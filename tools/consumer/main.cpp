// A consumer of the installed package: includes the umbrella header and uses it.
#include <qelsdk/qelsdk.h>

#include <cstdio>

int main()
{
    qelsdk::QelArray<int> lArray;
    lArray.Add(41);
    const int lValue = lArray[0] + 1;
    const qelsdk::QelString lText(lValue);
    std::printf("consumer: %s\n", lText.Buffer());
    return lText == "42" ? 0 : 1;
}
