package acme.tools

import acme.{Base, Other => Alias}

/** A widget. */
@deprecated
class Widget[T](name: String) extends Base[T](name) with Thing {
  val limit: Int = 3
  private def secret(x: Int): Int = { val local = 1; helper(x) }
  // Runs it.
  override def run(count: Int,
                   label: String = "a"): Thing = other.call(count)
}

object Widget { def apply(name: String) = new Widget(name) }
trait Thing { def run(a: Int): Thing; type Out }
case class Point(x: Int, y: Int)
