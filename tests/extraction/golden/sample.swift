import Foundation

/// A widget.
@objc public class Widget<T>: Base, Thing {
    private let secret = 1
    var size: Int { return secret }
    /// Makes one.
    init(name: String) { super.init() }
    /**
     Runs it.
     */
    @discardableResult
    public func run(_ count: Int,
                    label: String = "a") -> Thing { helper(count); return other.call() }
    func run() {}
}

struct Point { let x: Int }
enum Color: String { case red, green
  func name() -> String { return "" } }
protocol Thing { func run(a: Int) -> Thing; var size: Int { get } }
extension Widget { func more() {} }
typealias Handler = (Int) -> Void
private func after() {}
