// SPDX-License-Identifier: MIT
#pragma once

// What most sources of the window include.

#include <QAbstractItemModel>
#include <QApplication>
#include <QBoxLayout>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QStringList>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QTreeView>
#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>
